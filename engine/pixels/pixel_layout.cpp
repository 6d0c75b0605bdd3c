// SPDX-License-Identifier: MIT
#include "engine/pixels/pixel_layout.h"

#include "engine/pixels/pixel_layout_kernels.h"

namespace vireo {

void rowToBgra(const PixelFormat& format, const void* source, void* bgra, std::ptrdiff_t width) {
    pixelLayoutKernelsTables.chosen().toBgra(format, source, bgra, width);
}

void rowFromBgra(const PixelFormat& format, const void* bgra, void* destination, std::ptrdiff_t width) {
    pixelLayoutKernelsTables.chosen().fromBgra(format, bgra, destination, width);
}

}  // namespace vireo
