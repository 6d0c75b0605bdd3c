// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_LINE_KERNELS_H
#define VIREO_HOST_PIXKIT_LINE_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

/// A line of 4-byte pixels, `step` bytes apart.
struct SourceLine {
    const std::uint8_t* pixels;
    std::int64_t step;
    std::int64_t count;
};

struct DestinationLine {
    std::uint8_t* pixels;
    std::int64_t step;
    std::int64_t count;
};

/// Where a growing line's pixels lie between those of its source, in units of 1/unit of a source pixel: the
/// first `phase` after the source's first, each `advance` after the one before.
struct LinePosition {
    std::uint32_t phase;
    std::uint32_t advance;
    std::uint32_t unit;
};

/// The largest unit for which the kernels' rounding is exact.
inline constexpr std::uint32_t largestLineUnit = 1 << 14;

struct LineKernels {
    /// Linear interpolation between neighbours, rounded half up. Both neighbours of every pixel lie in the
    /// source; phase < unit, 0 < advance < unit.
    void (*grow)(const SourceLine& source, const DestinationLine& destination, const LinePosition& position);

    /// Pixel x of the source's row y becomes pixel y of the destination's row x. Steps are the bytes from row
    /// to row, of either sign.
    void (*transpose)(const std::uint8_t* source, std::int64_t sourceStep, std::uint8_t* destination,
                      std::int64_t destinationStep, std::int64_t width, std::int64_t height);
};

VIREO_KERNEL_TABLES(LineKernels, lineKernels)

#endif
