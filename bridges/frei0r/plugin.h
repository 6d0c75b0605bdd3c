// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_BRIDGES_FREI0R_PLUGIN_H
#define VIREO_BRIDGES_FREI0R_PLUGIN_H

#include <cstdint>

/// The filter that a plug-in carries; the one thing in which the plug-ins differ.
extern const std::uint32_t pluginFilterId;

#endif
