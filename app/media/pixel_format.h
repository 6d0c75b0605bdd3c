// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_PIXEL_FORMAT_H
#define VIREO_APP_MEDIA_PIXEL_FORMAT_H

#include "app/media/ffmpeg_objects.h"
#include "engine/pixels/pixel_layout.h"

#include <optional>

namespace vireo {

/// The libraries' description. Throws Error where they know none.
const AVPixFmtDescriptor& descriptionOf(AVPixelFormat format);

/// Bits per channel of a format; 32 for float, at least 8.
int formatDepth(AVPixelFormat format);

bool formatHasAlpha(AVPixelFormat format);

/// Whether samples of the format are colours (or a palette's numbers) and not luma and chroma.
bool formatIsRgb(AVPixelFormat format);

/// How RGB lies in memory whose pixels are whole and one behind the other; nothing for other formats.
std::optional<PixelFormat> packedRgb(AVPixelFormat format);

}  // namespace vireo

#endif
