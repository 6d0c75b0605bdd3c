// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_CONVOLUTION_KERNEL_KERNELS_H
#define VIREO_FILTERS_LENS_CONVOLUTION_KERNEL_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

struct ConvolutionKernelKernels {
    /// Replaces the fourth byte of `width` destination pixels of 4 bytes by the source's.
    void (*copyAlpha)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width);
};

VIREO_KERNEL_TABLES(ConvolutionKernelKernels, convolutionKernelKernels)

#endif
