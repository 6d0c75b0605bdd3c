// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/frei0r/module.h"

#include <dlfcn.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace frei0r {
namespace {

std::filesystem::path modulePath() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&loadEffect), &info) == 0 || info.dli_fname == nullptr) {
        throw std::runtime_error("the plug-ins' library does not find its own folder");
    }
    const auto folder = std::filesystem::weakly_canonical(info.dli_fname).parent_path();
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
