// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_EXTRACT_KERNELS_H
#define VIREO_FILTERS_WARP_EXTRACT_KERNELS_H

#include "simd/kernel_tables.h"

#include <array>
#include <cstdint>

/// The grey that each luminance becomes.
using TransferCurve = std::array<std::uint8_t, 256>;

struct ExtractKernels {
    /// `width` pixels of 4 bytes: blue, green and red become curve[luminance], alpha stays.
    void (*row)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
                const TransferCurve& curve);
};

VIREO_KERNEL_TABLES(ExtractKernels, extractKernels)

#endif
