// SPDX-License-Identifier: GPL-2.0-or-later
// The module's own pictures, which plug-ins are held against.
#ifndef VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_REFERENCE_RENDER_H
#define VIREO_TESTS_BRIDGES_FREI0R_SUPPORT_REFERENCE_RENDER_H

#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"

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
std::shared_ptr<const hosting::MetaPlugin> testedModule();

/// A filter of the tested module by the plug-in's name, "Vireo Levels".
const hosting::Filter& filterOf(const hosting::MetaPlugin& module, const std::string& pluginName);

void writeValue(const hosting::FilterInstance& instance, const hosting::Parameter& parameter,
                std::int64_t value);

/// Frame `number` of the clip as the filter renders it with rows from the bottom. `clipLength` is in frames,
/// 0 where unknown.
Picture referenceFrame(const hosting::FilterInstance& instance, const std::vector<Picture>& clip,
                       PictureSize size, std::size_t number, std::uint32_t clipLength);

#endif
