// SPDX-License-Identifier: MIT
#include "filters/warp/black_white_kernels.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

void grey(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) {
    for (std::int64_t i = 0; i < width; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, source + 4 * i, 4);
        const std::uint32_t result = greyPixel(pixel);
        std::memcpy(destination + 4 * i, &result, 4);
    }
}

void neutralChroma(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) {
    for (std::int64_t i = 0; i < width; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, source + 4 * i, 4);
        const std::uint32_t result = (pixel & ~0x7F7Fu) | 0x8080u;
        std::memcpy(destination + 4 * i, &result, 4);
    }
}

}  // namespace

const BlackWhiteKernels blackWhiteKernels{grey, neutralChroma};

}  // namespace VIREO_KERNEL_NAMESPACE
