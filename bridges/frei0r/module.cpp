// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/module.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

#if defined(_WIN32)
#include "host/win32.h"
#else
#include <dlfcn.h>
#endif

namespace frei0r {
namespace {

/// The file of the library that all plug-ins share.
std::filesystem::path libraryFile() {
#if defined(_WIN32)
    HMODULE self = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t*>(&loadEffect), &self);
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(self, path.data(), static_cast<DWORD>(path.size())));
    if (!path.empty()) return path;
#else
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&loadEffect), &info) != 0 && info.dli_fname != nullptr)
        return std::filesystem::weakly_canonical(info.dli_fname);
#endif
    throw std::runtime_error("the plug-ins' library does not find its own folder");
}

std::filesystem::path modulePath() {
    const auto folder = libraryFile().parent_path();
    const auto module = folder / "VireoFiltersMetaPlugin.vrmp";
    if (std::filesystem::exists(module)) return module;
    throw std::runtime_error("there is no VireoFiltersMetaPlugin.vrmp in " + folder.string());
}

}  // namespace

Effect loadEffect(std::uint32_t filterId) {
    auto module = hosting::MetaPlugin::shared(modulePath());
    const auto& filters = module->filters();
    const auto filter = std::ranges::find(filters, filterId, &hosting::Filter::id);
    if (filter == filters.end()) {
        throw std::runtime_error("the module has no filter " + std::to_string(filterId));
    }
    return {module, &*filter, &hosting::filterTraits(filter->properties.matchName)};
}

}  // namespace frei0r
