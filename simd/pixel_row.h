// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_PIXEL_ROW_H
#define VIREO_SIMD_PIXEL_ROW_H

#include <cstdint>

/// A row of pixels, of 4 bytes unless a kernel says otherwise, and where its result goes: over it, or apart.
struct PixelRow {
    const std::uint8_t* source;
    std::uint8_t* destination;
    std::int64_t width;
    /// Whether it may be written past the caches; fencePastCaches() follows the last row.
    bool pastCaches = false;
};

#endif
