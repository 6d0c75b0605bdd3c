// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_CONVOLUTION_KERNEL_KERNELS_H
#define VIREO_FILTERS_LENS_CONVOLUTION_KERNEL_KERNELS_H

#include "simd/kernel_tables.h"
#include "simd/pixel_row.h"

struct ConvolutionKernelKernels {
    /// Replaces the fourth byte of the destination's pixels by the source's.
    void (*copyAlpha)(const PixelRow& row);
};

VIREO_KERNEL_TABLES(ConvolutionKernelKernels, convolutionKernelKernels)

#endif
