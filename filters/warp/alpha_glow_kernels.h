// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_ALPHA_GLOW_KERNELS_H
#define VIREO_FILTERS_WARP_ALPHA_GLOW_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstddef>
#include <cstdint>

/// Marks of 64 neighbouring pixels of a row, the leftmost in the low bit.
using MarkWord = std::uint64_t;

/// Which pixels a ring adds: those without glow that have a mark among themselves and their neighbours, but
/// not on all five.
constexpr MarkWord ringMarks(MarkWord above, MarkWord below, MarkWord left, MarkWord self, MarkWord right,
                             MarkWord glow) {
    return (above | below | left | self | right) & ~(above & below & left & self & right) & ~glow;
}

/// A row of marks with the rows around it.
struct MarkRows {
    const MarkWord* above;
    const MarkWord* row;
    const MarkWord* below;
};

struct AlphaGlowKernels {
    /// Marks the pixels of alpha 248 or more, in (width + 63) / 64 words whose other bits are 0.
    void (*markSolid)(const std::uint8_t* source, MarkWord* marks, std::int64_t width);

    /// ringMarks of the words 1 to count - 1. Reads one word of the row behind them.
    void (*growRow)(const MarkRows& rows, const MarkWord* glow, MarkWord* ring, std::size_t count);

    /// Adds `count` words of marks to both masks. Whether there were any.
    bool (*addMarks)(const MarkWord* ring, MarkWord* solid, MarkWord* glow, std::size_t count);

    /// Blends the colour, in pixel order, into the marked pixels among the first `width`. The opacity is any
    /// 16-bit value but 0; what leaves a byte is cut off.
    void (*blendRow)(const MarkWord* marks, std::uint8_t* pixels, std::int64_t width, std::uint32_t color,
                     int opacity);
};

VIREO_KERNEL_TABLES(AlphaGlowKernels, alphaGlowKernels)

#endif
