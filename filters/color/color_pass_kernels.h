// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_COLOR_COLOR_PASS_KERNELS_H
#define VIREO_FILTERS_COLOR_COLOR_PASS_KERNELS_H

#include "simd/kernel_tables.h"
#include "simd/pixel_row.h"

#include <cstdint>

/// A pixel is near where each channel lies between the two pixels' channels, which must hold for any alpha.
struct ColorPassSelection {
    std::uint32_t lowest;
    std::uint32_t highest;
    bool greysNear;  ///< Near pixels turn grey instead of the others.
};

struct ColorPassKernels {
    /// Turns to grey what the selection says, alpha kept.
    void (*row)(const PixelRow& row, const ColorPassSelection& selection);
};

VIREO_KERNEL_TABLES(ColorPassKernels, colorPassKernels)

#endif
