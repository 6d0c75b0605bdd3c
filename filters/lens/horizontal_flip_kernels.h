// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_HORIZONTAL_FLIP_KERNELS_H
#define VIREO_FILTERS_LENS_HORIZONTAL_FLIP_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

struct HorizontalFlipKernels {
    /// Writes `width` pixels in reverse order.
    using Row = void (*)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width);

    Row row4;
    Row row8;
    Row row16;
    Row row4PastCaches;  ///< row4 for frames that no cache holds.
};

VIREO_KERNEL_TABLES(HorizontalFlipKernels, horizontalFlipKernels)

#endif
