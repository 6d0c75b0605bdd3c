// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_BASIC_SOLARIZE_KERNELS_H
#define VIREO_FILTERS_BASIC_SOLARIZE_KERNELS_H

#include "simd/kernel_tables.h"
#include "simd/pixel_row.h"

struct SolarizeKernels {
    /// A pixel whose luma is below the threshold has every channel c replaced by
    /// (threshold - c) mod 256, or by 0 where c is not below the threshold.
    void (*row)(const PixelRow& row, int threshold);
};

VIREO_KERNEL_TABLES(SolarizeKernels, solarizeKernels)

#endif
