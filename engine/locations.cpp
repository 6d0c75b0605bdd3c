// SPDX-License-Identifier: MIT
#include "engine/locations.h"

#include "engine/error.h"
#include "engine/files.h"

#include <cstdlib>

#if defined(_WIN32)
#include "host/win32.h"
#else
#include <link.h>
#endif

namespace vireo {
namespace {

constexpr char moduleName[] = "VireoFiltersMetaPlugin.vrmp";

/// The folder of the library or program that this code is part of; empty where the system does not tell.
std::filesystem::path ownFolder() {
#if defined(_WIN32)
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&ownFolder), &module);
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
#else
    struct Search {
        std::uintptr_t address;
        std::string file;
    } search{reinterpret_cast<std::uintptr_t>(&ownFolder), {}};
    dl_iterate_phdr(
        [](dl_phdr_info* object, std::size_t, void* data) {
            auto& wanted = *static_cast<Search*>(data);
            for (int i = 0; i < object->dlpi_phnum; ++i) {
                const auto& segment = object->dlpi_phdr[i];
                const std::uintptr_t begin = object->dlpi_addr + segment.p_vaddr;
                if (segment.p_type != PT_LOAD || wanted.address - begin >= segment.p_memsz) continue;
                wanted.file = object->dlpi_name;
                return 1;
            }
            return 0;
        },
        &search);
    // The program itself has no name here.
    std::error_code error;
    return std::filesystem::canonical(search.file.empty() ? "/proc/self/exe" : search.file, error)
        .parent_path();
#endif
}

/// The folder that a variable of the environment names; empty where it names none.
std::filesystem::path environmentFolder(const char* variable) {
#if defined(_WIN32)
    const wchar_t* folder = _wgetenv(std::filesystem::path(variable).c_str());
    return folder == nullptr ? L"" : folder;
#else
    const char* folder = std::getenv(variable);
    return folder == nullptr ? "" : folder;
#endif
}

/// Where the user's settings of all programs lie; empty where that is not known.
std::filesystem::path configurationFolder() {
#if defined(_WIN32)
    return environmentFolder("APPDATA");
#else
    const std::filesystem::path folder = environmentFolder("XDG_CONFIG_HOME"),
                                home = environmentFolder("HOME");
    if (folder.is_absolute()) return folder;
    return home.empty() ? home : home / ".config";
#endif
}

}  // namespace

std::filesystem::path findModule(const std::string& wish) {
    if (!wish.empty()) return pathOf(wish);
    if (const char* named = std::getenv("VIREO_MODULE"); named != nullptr && *named != '\0')
        return pathOf(named);

    const std::filesystem::path folder = ownFolder();
    for (const char* place : {".", VIREO_MODULE_FROM_PROGRAM, VIREO_MODULE_FROM_LIBRARY}) {
        std::filesystem::path candidate = (folder / place / moduleName).lexically_normal();
        std::error_code error;
        if (std::filesystem::exists(candidate, error)) return candidate;
    }
    throw Error(Fault::NoModule, "there is no " + std::string(moduleName) + " in " + utf8Of(folder) +
                                     "; --module or VIREO_MODULE says where it is");
}

std::vector<std::filesystem::path> presetFolders() {
    std::vector<std::filesystem::path> folders;
    if (const auto own = configurationFolder(); !own.empty()) folders.push_back(own / "vireo" / "presets");
    const std::filesystem::path folder = ownFolder();
    std::filesystem::path shipped = (folder / VIREO_PRESETS_FROM_PROGRAM).lexically_normal();
    std::error_code error;
    if (!std::filesystem::exists(shipped, error)) {
        shipped = (folder / VIREO_PRESETS_FROM_LIBRARY).lexically_normal();
    }
    folders.push_back(std::move(shipped));
    return folders;
}

}  // namespace vireo
