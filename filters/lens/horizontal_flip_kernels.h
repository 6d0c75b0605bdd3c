// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_HORIZONTAL_FLIP_KERNELS_H
#define VIREO_FILTERS_LENS_HORIZONTAL_FLIP_KERNELS_H

#include "simd/kernel_tables.h"
#include "simd/pixel_row.h"

struct HorizontalFlipKernels {
    /// Writes the pixels in reverse order, of 4, 8 or 16 bytes. The destination is not the source.
    using Row = void (*)(const PixelRow& row);

    Row row4;
    Row row8;
    Row row16;
};

VIREO_KERNEL_TABLES(HorizontalFlipKernels, horizontalFlipKernels)

#endif
