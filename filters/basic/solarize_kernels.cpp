// SPDX-License-Identifier: MIT
#include "filters/basic/solarize_kernels.h"

#include "framework/luma_weights.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

constexpr std::uint32_t inverted(std::uint32_t channel, int threshold) {
    const int difference = threshold - static_cast<int>(channel);
    return static_cast<std::uint32_t>(difference > 0 ? difference : 0) & 0xFF;
}

void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width, int threshold) {
    for (std::int64_t i = 0; i < width; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, source + 4 * i, 4);
        const std::uint32_t c0 = pixel & 0xFF;
        const std::uint32_t c1 = pixel >> 8 & 0xFF;
        const std::uint32_t c2 = pixel >> 16 & 0xFF;
        // Blue carries the weight of red and red that of blue: old projects depend on it.
        const std::uint32_t luma = (c0 * lumaWeight0 >> lumaShift) + (c1 * lumaWeight1 >> lumaShift) +
                                   (c2 * lumaWeight2 >> lumaShift);
        const std::uint32_t solarized = (pixel & 0xFF000000) | inverted(c2, threshold) << 16 |
                                        inverted(c1, threshold) << 8 | inverted(c0, threshold);
        const std::uint32_t result = static_cast<int>(luma) < threshold ? solarized : pixel;
        std::memcpy(destination + 4 * i, &result, 4);
    }
}

}  // namespace

const SolarizeKernels solarizeKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
