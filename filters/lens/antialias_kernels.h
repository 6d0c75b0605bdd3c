// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_ANTIALIAS_KERNELS_H
#define VIREO_FILTERS_LENS_ANTIALIAS_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

struct AntialiasKernels {
    /// Interior columns: `width` pixels of 4 bytes become the chain left, centre, right, up, down. One pixel
    /// either side of the row's `width` is read.
    void (*row)(const std::uint8_t* up, const std::uint8_t* centre, const std::uint8_t* down,
                std::uint8_t* destination, std::int64_t width);
};

VIREO_KERNEL_TABLES(AntialiasKernels, antialiasKernels)

#endif
