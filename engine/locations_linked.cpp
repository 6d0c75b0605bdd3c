// SPDX-License-Identifier: MIT
// Of a program that the module is linked into, and that has no files.
#include "engine/locations.h"

namespace vireo {

std::filesystem::path findModule(const std::string&) { return "VireoFiltersMetaPlugin.vrmp"; }

std::vector<std::filesystem::path> presetFolders() { return {"presets"}; }

}  // namespace vireo
