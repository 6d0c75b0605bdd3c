// SPDX-License-Identifier: MIT
#include "app/commands/locations.h"

#include "app/files.h"
#include "app/render/render_job.h"

#include <cstdlib>

#if defined(_WIN32)
#include "host/win32.h"
#endif

namespace vireo {
namespace {

constexpr char moduleName[] = "VireoFiltersMetaPlugin.vrmp";

std::filesystem::path programFolder() {
#if defined(_WIN32)
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return std::filesystem::path(path).parent_path();
#else
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
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

    const std::filesystem::path folder = programFolder();
    for (const char* place : {".", VIREO_INSTALLED_MODULE_FOLDER}) {
        std::filesystem::path candidate = (folder / place / moduleName).lexically_normal();
        std::error_code error;
        if (std::filesystem::exists(candidate, error)) return candidate;
    }
    throw RenderError("there is no " + std::string(moduleName) + " in " + utf8Of(folder) +
                      "; --module or VIREO_MODULE says where it is");
}

std::vector<std::filesystem::path> presetFolders() {
    std::vector<std::filesystem::path> folders;
    if (const auto own = configurationFolder(); !own.empty()) folders.push_back(own / "vireo" / "presets");
    folders.push_back((programFolder() / VIREO_INSTALLED_PRESET_FOLDER).lexically_normal());
    return folders;
}

}  // namespace vireo
