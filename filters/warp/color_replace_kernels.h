// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_COLOR_REPLACE_KERNELS_H
#define VIREO_FILTERS_WARP_COLOR_REPLACE_KERNELS_H

#include "simd/kernel_tables.h"
#include "simd/pixel_row.h"

#include <cstdint>

/// What pixels are compared with and what they become; colours in pixel order, blue in the low byte.
struct ColorSwap {
    std::uint32_t target;
    std::uint32_t replacement;
    std::uint8_t tolerance;  ///< The largest difference of any channel that still counts as equal.
};

/// Pixels within the tolerance of the target take the replacement, flat or
/// scaled by their own luma; alpha and all other pixels stay.
struct ColorReplaceKernels {
    void (*solid)(const PixelRow& row, const ColorSwap& swap);
    void (*shaded)(const PixelRow& row, const ColorSwap& swap);
};

VIREO_KERNEL_TABLES(ColorReplaceKernels, colorReplaceKernels)

#endif
