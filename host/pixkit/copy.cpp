// SPDX-License-Identifier: MIT
#include "host/pixkit/pixel_formats.h"
#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <cstring>

void vpixCopy(FrameBuffer* source, FrameBuffer* destination, const FrameRect*, const FrameRect*,
              std::uint32_t) {
    const int height = std::min(source->bounds.bottom, destination->bounds.bottom);
    for (int y = 0; y < height; ++y) {
        std::memcpy(static_cast<char*>(destination->pixels.get()) + std::int64_t{y} * destination->rowBytes,
                    static_cast<const char*>(source->pixels.get()) + std::int64_t{y} * source->rowBytes,
                    static_cast<std::size_t>(source->bounds.right) *
                        static_cast<std::size_t>(PixKit::bytesPerPixel(PixKit::pixelFormat(source))));
    }
}
