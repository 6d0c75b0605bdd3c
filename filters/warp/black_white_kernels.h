// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_BLACK_WHITE_KERNELS_H
#define VIREO_FILTERS_WARP_BLACK_WHITE_KERNELS_H

#include "simd/kernel_tables.h"
#include "simd/pixel_row.h"

#include <cstdint>

struct BlackWhiteKernels {
    /// "bgra": blue, green and red become the pixel's luma, alpha stays.
    void (*grey)(const PixelRow& row);
    /// "vuya": V and U become 128, Y and alpha stay.
    void (*neutralChroma)(const PixelRow& row);
};

VIREO_KERNEL_TABLES(BlackWhiteKernels, blackWhiteKernels)

/// One "bgra" pixel. The sum is in single precision and in this order, since its last bit decides where it
/// meets a whole number. White gives 255.5, so that nothing needs limiting.
constexpr std::uint32_t greyPixel(std::uint32_t pixel) {
    const auto blue = static_cast<float>(static_cast<int>(pixel & 0xFF));
    const auto green = static_cast<float>(static_cast<int>(pixel >> 8 & 0xFF));
    const auto red = static_cast<float>(static_cast<int>(pixel >> 16 & 0xFF));
    const float sum = ((0.299f * red + 0.587f * green) + 0.114f * blue) + 0.5f;
    const auto luma = static_cast<std::uint32_t>(static_cast<int>(sum));
    return (pixel & 0xFF000000) | luma << 16 | luma << 8 | luma;
}

#endif
