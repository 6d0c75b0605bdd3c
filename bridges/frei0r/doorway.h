// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_BRIDGES_FREI0R_DOORWAY_H
#define VIREO_BRIDGES_FREI0R_DOORWAY_H

#include <cstdint>

// All in which the plug-ins differ.

/// The filter that the plug-in carries.
extern const std::uint32_t pluginFilterId;

/// As the plug-in's file is called, for messages.
extern const char* const pluginFileName;

#endif
