// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_PIXEL_FORMATS_H
#define VIREO_FRAMEWORK_PIXEL_FORMATS_H

#include "host/pixkit/pixel_formats.h"
#include "host/vrm/filter_invocation.h"

#include <cstdint>
#include <span>

/// GetPixelFormat of a filter that renders these formats: 0 with the asked one written, or 1 past the last.
inline std::int32_t namePixelFormat(FilterInvocation& invocation, std::span<const std::uint32_t> formats) {
    if (invocation.pixelFormatIndex >= formats.size()) return 1;
    invocation.pixelFormat = formats[invocation.pixelFormatIndex];
    return 0;
}

#endif
