// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_PIXELS_PIXEL_LAYOUT_KERNELS_H
#define VIREO_ENGINE_PIXELS_PIXEL_LAYOUT_KERNELS_H

#include "engine/pixels/pixel_layout.h"
#include "simd/kernel_tables.h"

namespace vireo {

/// rowToBgra() and rowFromBgra().
struct PixelLayoutKernels {
    void (*toBgra)(const PixelFormat& format, const void* source, void* bgra, std::ptrdiff_t width);
    void (*fromBgra)(const PixelFormat& format, const void* bgra, void* destination, std::ptrdiff_t width);
};

VIREO_KERNEL_TABLES(PixelLayoutKernels, pixelLayoutKernels)

}  // namespace vireo

#endif
