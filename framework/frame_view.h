// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_FRAME_VIEW_H
#define VIREO_FRAMEWORK_FRAME_VIEW_H

#include "host/pixkit/pixkit.h"
#include "simd/past_caches.h"
#include "simd/pixel_row.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// A frame's pixels and geometry as a filter sees them. Rows are counted in memory, the picture's bottom
/// first.
struct FrameView {
    std::uint8_t* pixels;
    std::int32_t rowBytes;
    FrameRect bounds;

    std::int64_t width() const { return std::int64_t{bounds.right} - bounds.left; }
    std::int64_t height() const { return std::int64_t{bounds.bottom} - bounds.top; }
};

/// Reads the descriptor itself.
inline FrameView frameOf(const FrameBuffer& descriptor) {
    return {static_cast<std::uint8_t*>(descriptor.pixels.get()), descriptor.rowBytes, descriptor.bounds};
}

/// Asks PixKit.
inline FrameView frameThroughPixKit(FrameBuffer* handle) {
    FrameView frame{static_cast<std::uint8_t*>(vpixGetPixels(handle)), vpixGetRowbytes(handle), {}};
    vpixGetBounds(handle, &frame.bounds);
    return frame;
}

inline constexpr std::int64_t bytesPerPixel = 4;

/// Row bytes rounded toward zero to whole pixels: how most filters step from row to row.
constexpr std::int64_t wholePixels(std::int32_t rowBytes) { return rowBytes / bytesPerPixel * bytesPerPixel; }

/// The bytes that a frame's rows cover, relative to its first pixel; the end is excluded.
struct FrameExtent {
    std::int64_t begin = 0;
    std::int64_t end = 0;

    explicit FrameExtent(const FrameView& frame, std::int64_t pixelBytes = bytesPerPixel) {
        if (frame.width() <= 0 || frame.height() <= 0) return;
        const std::int64_t lastRow = (frame.height() - 1) * frame.rowBytes;
        begin = std::min<std::int64_t>(0, lastRow);
        end = std::max<std::int64_t>(0, lastRow) + frame.width() * pixelBytes;
    }

    /// How many of `width` pixels from a byte offset on lie inside.
    std::int64_t fitting(std::int64_t offset, std::int64_t width, std::int64_t pixelBytes) const {
        if (offset < begin || offset >= end) return 0;
        return std::min(width, (end - offset) / pixelBytes);
    }
};

/// A walk of `width` pixels by `height` rows over two frames, each with its own step between rows.
struct RowWalk {
    std::int64_t sourceStride;
    std::int64_t destinationStride;
    std::int64_t width;
    std::int64_t height;
    std::int64_t pixelBytes = bytesPerPixel;
};

/// Calls block(source, destination, width, rows) for runs of rows of the walk. Filters walk both frames with
/// one frame's geometry; rows, or ends of rows, that the other frame does not have are left out. Frames of
/// equal geometry are one block.
template <class Block>
void forEachBlock(const FrameView& source, const FrameView& destination, const RowWalk& walk, Block&& block) {
    if (walk.width <= 0 || walk.height <= 0) return;
    const FrameExtent sourceExtent(source, walk.pixelBytes);
    const FrameExtent destinationExtent(destination, walk.pixelBytes);
    const auto fitting = [&](std::int64_t row) {
        return std::min(sourceExtent.fitting(row * walk.sourceStride, walk.width, walk.pixelBytes),
                        destinationExtent.fitting(row * walk.destinationStride, walk.width, walk.pixelBytes));
    };
    const auto emit = [&](std::int64_t row, std::int64_t rows, std::int64_t width) {
        if (rows > 0 && width > 0) {
            block(source.pixels + row * walk.sourceStride, destination.pixels + row * walk.destinationStride,
                  width, rows);
        }
    };
    std::int64_t begin = 0;
    for (std::int64_t row = 0; row < walk.height; ++row) {
        const std::int64_t width = fitting(row);
        if (width == walk.width) continue;
        emit(begin, row - begin, walk.width);
        emit(row, 1, width);
        begin = row + 1;
    }
    emit(begin, walk.height - begin, walk.width);
}

/// The same row by row: calls row(PixelRow).
template <class Row>
void forEachRow(const FrameView& source, const FrameView& destination, const RowWalk& walk, Row&& row) {
    const bool pastCaches =
        goesPastCaches(source.pixels, destination.pixels, walk.width * walk.pixelBytes, walk.height);
    forEachBlock(source, destination, walk,
                 [&](const std::uint8_t* from, std::uint8_t* to, std::int64_t width, std::int64_t rows) {
                     for (std::int64_t y = 0; y < rows; ++y) {
                         row(PixelRow{from + y * walk.sourceStride, to + y * walk.destinationStride, width,
                                      pastCaches});
                     }
                 });
    if (pastCaches) fencePastCaches();
}

#endif
