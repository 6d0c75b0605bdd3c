// SPDX-License-Identifier: MIT
#include "app/commands/module_location.h"

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

}  // namespace vireo
