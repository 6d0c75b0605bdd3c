// SPDX-License-Identifier: MIT
#include "filters/basic/solarize_kernels.h"

#include "framework/luma_vectors.h"

#include <algorithm>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

constexpr std::uint32_t colorBits = 0x00FFFFFF;

void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width, int threshold) {
    // Blue carries the weight of red and red that of blue: old projects depend on it.
    const LumaVectors lumaOf(lumaWeight0, lumaWeight1, lumaWeight2);
    const ByteVector limit = ByteVector{} + static_cast<std::uint8_t>(std::clamp(threshold, 0, 255));
    const ByteVector minuend = ByteVector{} + static_cast<std::uint8_t>(threshold);
    mapPixels(source, destination, width, [=](PixelVector pixels) {
        const auto luma = (IntVector)lumaOf(pixels);
        const auto bytes = (ByteVector)pixels;
        const auto solarized = (PixelVector)(minuend - (bytes < limit ? bytes : limit));
        return pixels ^ ((pixels ^ solarized) & (PixelVector)(luma < threshold) & colorBits);
    });
}

}  // namespace

const SolarizeKernels solarizeKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
