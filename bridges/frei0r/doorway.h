// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_BRIDGES_FREI0R_DOORWAY_H
#define VIREO_BRIDGES_FREI0R_DOORWAY_H

#include "bridges/frei0r/plugin.h"

#include <cstdint>

// All in which the plug-ins differ.

/// The filter that the plug-in carries.
extern const std::uint32_t pluginFilterId;

/// As the plug-in's file is called, for messages.
extern const char* const pluginFileName;

// What the systems do in different ways.

/// This plug-in in the library that all share, which the first call loads. Null where it cannot be loaded:
/// standard error says why.
frei0r::Plugin* loadPlugin();

/// What loadPlugin has loaded, or null.
frei0r::Plugin* loadedPlugin();

#endif
