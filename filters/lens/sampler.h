// SPDX-License-Identifier: MIT
// What the two lens filters share: how a picture is sampled between its pixels, how its border fades into the
// fill pixel, and the walk over the destination.
#ifndef VIREO_FILTERS_LENS_SAMPLER_H
#define VIREO_FILTERS_LENS_SAMPLER_H

#include "filters/lens/sampler_kernels.h"
#include "framework/frame_view.h"
#include "framework/shared_rows.h"
#include "host/vrm/filter_invocation.h"

#include <algorithm>
#include <cstdint>

/// How far apart the pixels of a frame lie in the picture that it is a part of.
struct LensSteps {
    int x;
    int y;

    bool operator==(const LensSteps&) const = default;
};

/// Half frames count double in the direction that is halved, and single where both are.
constexpr LensSteps lensSteps(std::uint16_t fieldFlags) {
    const bool halfWidth = (fieldFlags & FieldFlagHalfWidth) != 0;
    const bool halfHeight = (fieldFlags & (FieldFlagUpper | FieldFlagLower | FieldFlagHalfHeight)) != 0;
    if (halfWidth && halfHeight) return {1, 1};
    return {halfWidth ? 2 : 1, halfHeight ? 2 : 1};
}

/// The opaque pixel of a colour 0x00BBGGRR.
constexpr std::uint32_t fillPixel(std::uint32_t color) {
    return 0xFF000000 | (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

/// A frame's pixels to be sampled, its rows from the last in memory to the first.
inline SampledPicture sampledPicture(const FrameView& frame, std::uint32_t fill) {
    const auto size = [](std::int64_t pixels) {
        return static_cast<std::int32_t>(std::min(pixels, SampledPicture::largestSize));
    };
    return {frame.pixels + (frame.height() - 1) * frame.rowBytes, -std::int64_t{frame.rowBytes},
            size(frame.width()), size(frame.height()), fill};
}

/// A source copied aside with softened alpha. Null where the host has no memory.
class SoftenedCopy {
public:
    explicit SoftenedCopy(FrameBuffer* source);
    SoftenedCopy(const SoftenedCopy&) = delete;
    SoftenedCopy& operator=(const SoftenedCopy&) = delete;
    ~SoftenedCopy();

    FrameBuffer* get() const { return handle_; }

private:
    FrameBuffer* handle_;
};

/// So many columns are placed and sampled at a time.
inline constexpr std::int32_t tileWidth = 512;

/// As many pixels as the picture and its destination have in common.
struct SampledSize {
    std::int32_t columns;
    std::int32_t rows;

    SampledSize(const SampledPicture& picture, const FrameView& destination)
        : columns(static_cast<std::int32_t>(std::min<std::int64_t>(picture.width, destination.width()))),
          rows(static_cast<std::int32_t>(std::min<std::int64_t>(picture.height, destination.height()))) {}
};

/// Renders columns of a row, counted from the last in memory, at the positions x and y.
inline void renderSampledRow(const SampledPicture& picture, const FrameView& destination, std::int32_t row,
                             std::int32_t first, std::int32_t columns, const std::int32_t* x,
                             const std::int32_t* y) {
    std::uint8_t* const to = destination.pixels + (destination.height() - 1 - row) * destination.rowBytes;
    samplerKernelsTables.chosen().row(picture, x, y, to + bytesPerPixel * first, columns);
}

/// Calls use(place, first, columns) for each tile of columns. makeTile(first, columns) gives a function
/// place(row, x, y) that writes the positions of those columns of a row for SamplerKernels::row.
template <class MakeTile, class Use>
void forEachTile(std::int32_t columns, const MakeTile& makeTile, Use&& use) {
    for (std::int32_t first = 0; first < columns; first += tileWidth) {
        const std::int32_t inTile = std::min(tileWidth, columns - first);
        use(makeTile(first, inTile), first, inTile);
    }
}

/// Renders the whole size, tile after tile, on the threads that the host has.
template <class MakeTile>
void renderSampled(const SampledPicture& picture, const FrameView& destination, const MakeTile& makeTile) {
    const SampledSize size(picture, destination);
    shareRows(size.rows, [&](std::int32_t begin, std::int32_t end) {
        std::int32_t x[tileWidth], y[tileWidth];
        forEachTile(size.columns, makeTile, [&](const auto& place, std::int32_t first, std::int32_t columns) {
            for (std::int32_t row = begin; row < end; ++row) {
                place(row, x, y);
                renderSampledRow(picture, destination, row, first, columns, x, y);
            }
        });
    });
}

#endif
