// SPDX-License-Identifier: MIT
// What lies where, seen from the program.
#ifndef VIREO_APP_COMMANDS_LOCATIONS_H
#define VIREO_APP_COMMANDS_LOCATIONS_H

#include <filesystem>
#include <string>
#include <vector>

namespace vireo {

/// The module that was asked for, else what VIREO_MODULE names, else the one beside the program or in the
/// folder that an installation has for it. Throws RenderError where there is none.
std::filesystem::path findModule(const std::string& wish);

/// Where presets may lie, whether there is such a folder or not: the user's own first, then the one that came
/// with the program.
std::vector<std::filesystem::path> presetFolders();

}  // namespace vireo

#endif
