// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_MODULE_LOCATION_H
#define VIREO_APP_COMMANDS_MODULE_LOCATION_H

#include <filesystem>
#include <string>

namespace vireo {

/// The module that was asked for, else what VIREO_MODULE names, else the one beside the program or in the
/// folder that an installation has for it. Throws RenderError where there is none.
std::filesystem::path findModule(const std::string& wish);

}  // namespace vireo

#endif
