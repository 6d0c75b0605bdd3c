// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_EXTRACT_KERNELS_H
#define VIREO_FILTERS_WARP_EXTRACT_KERNELS_H

#include "simd/kernel_tables.h"
#include "simd/pixel_row.h"

#include <array>
#include <cstdint>

/// The grey that each luminance becomes.
using TransferCurve = std::array<std::uint8_t, 256>;

struct ExtractKernels {
    /// Blue, green and red become curve[luminance], alpha stays.
    void (*row)(const PixelRow& row, const TransferCurve& curve);
};

VIREO_KERNEL_TABLES(ExtractKernels, extractKernels)

#endif
