// SPDX-License-Identifier: GPL-2.0-or-later
// The module's own pictures, which plug-ins are held against.
#ifndef VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_REFERENCE_RENDER_H
#define VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_REFERENCE_RENDER_H

#include "host/vrm/filter_instance.h"
#include "host/vrm/meta_plugin.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct PictureSize {
    unsigned width;
    unsigned height;
};

/// Pixels of one frame, rows from the top.
using Picture = std::vector<std::uint32_t>;

/// Frames of random pixels.
std::vector<Picture> randomClip(PictureSize size, std::size_t frames);

/// The module of the build, the one that its plug-ins use too.
std::shared_ptr<const VRM::MetaPlugin> testedModule();

/// A filter of the tested module by the plug-in's name, "Vireo Levels".
const VRM::Filter& filterOf(const VRM::MetaPlugin& module, const std::string& pluginName);

void writeValue(const VRM::FilterInstance& instance, const VRM::Parameter& parameter, std::int64_t value);

/// Frame `number` of the clip as the filter renders it with rows from the bottom. `clipLength` is in frames,
/// 0 where unknown.
Picture referenceFrame(const VRM::FilterInstance& instance, const std::vector<Picture>& clip,
                       PictureSize size, std::size_t number, std::uint32_t clipLength);

#endif
