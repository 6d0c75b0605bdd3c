// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_PIXEL_VIEW_H
#define VIREO_HOST_PIXKIT_PIXEL_VIEW_H

#include "host/pixkit/frame_buffer.h"
#include "host/pixkit/pixel_formats.h"

#include <algorithm>
#include <cstdint>

namespace PixKit {

/// Coordinates along one axis; the end is excluded.
struct Range {
    std::int64_t begin;
    std::int64_t end;

    std::int64_t size() const { return end - begin; }
    bool empty() const { return begin >= end; }
    bool operator==(const Range&) const = default;
};

constexpr Range intersection(const Range& a, const Range& b) {
    return {std::max(a.begin, b.begin), std::min(a.end, b.end)};
}

constexpr Range columnsOf(const FrameRect& rect) { return {rect.left, rect.right}; }
constexpr Range rowsOf(const FrameRect& rect) { return {rect.top, rect.bottom}; }

/// A buffer's pixels by picture coordinates.
struct PixelView {
    std::uint8_t* pixels;
    std::int64_t rowBytes;
    std::int64_t pixelBytes;
    Range columns;
    Range rows;

    std::uint8_t* at(std::int64_t x, std::int64_t y) const {
        return pixels + (rows.end - 1 - y) * rowBytes + (x - columns.begin) * pixelBytes;
    }
};

inline PixelView viewOf(const FrameBuffer* handle) {
    return {static_cast<std::uint8_t*>(handle->pixels.get()), handle->rowBytes,
            bytesPerPixel(pixelFormat(handle)), columnsOf(handle->bounds), rowsOf(handle->bounds)};
}

}  // namespace PixKit

#endif
