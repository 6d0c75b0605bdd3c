// SPDX-License-Identifier: MIT
// GStreamer's video as the engine takes it.
#ifndef VIREO_BRIDGES_GSTREAMER_VIDEO_FRAMES_H
#define VIREO_BRIDGES_GSTREAMER_VIDEO_FRAMES_H

#include "vireo/vireo.h"

#include <gst/video/video.h>

#include <cstdint>

namespace vireo::gstreamer {

/// The formats that pads offer, those first that filters take as they are.
#define VIREO_VIDEO_FORMATS "{ BGRA, BGRx, RGBA, RGBx, ARGB, xRGB, ABGR, xBGR, BGR, RGB, GRAY8 }"

/// A frame without pixels, as caps describe it.
VireoFrame frameOf(const GstVideoInfo& info);

VireoFrame frameOf(GstVideoFrame& mapped);

/// As VireoTime has it. `buffer` may be null where only caps are known.
std::int32_t interlacingOf(const GstVideoInfo& info, GstBuffer* buffer);

}  // namespace vireo::gstreamer

#endif
