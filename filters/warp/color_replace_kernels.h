// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_COLOR_REPLACE_KERNELS_H
#define VIREO_FILTERS_WARP_COLOR_REPLACE_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

/// What pixels are compared with and what they become; colours in pixel order, blue in the low byte.
struct ColorSwap {
    std::uint32_t target;
    std::uint32_t replacement;
    std::uint8_t tolerance;  ///< The largest difference of any channel that still counts as equal.
};

/// Rows of `width` pixels of 4 bytes. Pixels within the tolerance of the target take the replacement, flat or
/// scaled by their own luma; alpha and all other pixels stay.
struct ColorReplaceKernels {
    void (*solid)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
                  const ColorSwap& swap);
    void (*shaded)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
                   const ColorSwap& swap);
};

VIREO_KERNEL_TABLES(ColorReplaceKernels, colorReplaceKernels)

#endif
