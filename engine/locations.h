// SPDX-License-Identifier: MIT
// What lies where, seen from the library or program that this is part of.
#ifndef VIREO_ENGINE_LOCATIONS_H
#define VIREO_ENGINE_LOCATIONS_H

#include <filesystem>
#include <string>
#include <vector>

namespace vireo {

/// The module that was asked for, else what VIREO_MODULE names, else the one beside this library or program
/// or in the folder that an installation has for it. Throws Error where there is none.
std::filesystem::path findModule(const std::string& wish);

/// Where presets may lie, whether there is such a folder or not: the user's own first, then the one that came
/// with this library or program.
std::vector<std::filesystem::path> presetFolders();

}  // namespace vireo

#endif
