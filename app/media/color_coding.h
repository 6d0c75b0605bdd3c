// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_COLOR_CODING_H
#define VIREO_APP_MEDIA_COLOR_CODING_H

#include "app/media/color_kernels.h"
#include "app/media/ffmpeg_objects.h"

namespace vireo {

/// How YUV samples stand for colours.
struct ColorCoding {
    AVColorSpace matrix = AVCOL_SPC_BT709;
    bool fullRange = false;
};

/// Whether untagged pictures of so many lines count as BT.601, else as BT.709.
constexpr bool isStandardDefinition(int lines) { return lines <= 576; }

/// What the tags say; where they say nothing, what such pictures are: limited range (grey ones full), and by
/// the number of lines BT.601 or BT.709.
ColorCoding colorCoding(AVColorSpace matrix, AVColorRange range, AVPixelFormat format, int lines);

/// From samples of `sampleDepth` bits, stored times 2^sampleShift, to channels of `channelDepth` bits.
YuvToRgb yuvToRgb(const ColorCoding& coding, int sampleDepth, int sampleShift, int channelDepth);

/// From channels to samples.
RgbToYuv rgbToYuv(const ColorCoding& coding, int channelDepth, int sampleDepth);

}  // namespace vireo

#endif
