// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_BASIC_EDGE_FEATHER_KERNELS_H
#define VIREO_FILTERS_BASIC_EDGE_FEATHER_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

/// Both work in place on `width` pixels of 4 bytes: alpha becomes alpha * factor / 100, factors 0 to 100.
struct EdgeFeatherKernels {
    void (*scaleAlpha)(std::uint8_t* pixels, std::int64_t width, int factor);
    /// A factor for each pixel.
    void (*scaleAlphaByColumn)(std::uint8_t* pixels, std::int64_t width, const std::uint8_t* factors);
};

VIREO_KERNEL_TABLES(EdgeFeatherKernels, edgeFeatherKernels)

#endif
