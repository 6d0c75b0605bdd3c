// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_UTILKIT_ALPHA_KERNELS_H
#define VIREO_HOST_UTILKIT_ALPHA_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

struct AlphaKernels {
    /// 1 2 1 over a row's alpha, its ends repeating. The row has at least one pixel of 4 bytes.
    void (*sumAcross)(const std::uint8_t* row, std::uint16_t* sums, std::int64_t width);

    /// Alpha becomes 1 2 1 over three rows of such sums, divided by 16 and rounded half up.
    void (*soften)(std::uint8_t* row, const std::uint16_t* above, const std::uint16_t* here,
                   const std::uint16_t* below, std::int64_t width);
};

VIREO_KERNEL_TABLES(AlphaKernels, alphaKernels)

#endif
