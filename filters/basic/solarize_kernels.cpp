// SPDX-License-Identifier: MIT
#include "filters/basic/solarize_kernels.h"

#include "framework/luma_weights.h"
#include "framework/pixel_vectors.h"

#include <algorithm>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

constexpr std::uint32_t colorBits = 0x00FFFFFF;

void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width, int threshold) {
    // Blue carries the weight of red and red that of blue: old projects depend on it.
    const auto evenWeights = (WordVector)(PixelVector{} + (lumaWeight0 | lumaWeight2 << 16));
    const auto oddWeights = (WordVector)(PixelVector{} + lumaWeight1);
    const ByteVector limit = ByteVector{} + static_cast<std::uint8_t>(std::clamp(threshold, 0, 255));
    const ByteVector minuend = ByteVector{} + static_cast<std::uint8_t>(threshold);
    mapPixels(source, destination, width, [=](PixelVector pixels) {
        const auto words = (WordVector)pixels;
        const auto weighted =
            (PixelVector)(multiplyHigh(words & 0xFF, evenWeights) + multiplyHigh(words >> 8, oddWeights));
        const auto luma = (IntVector)((weighted & 0xFFFF) + (weighted >> 16));
        const auto bytes = (ByteVector)pixels;
        const auto solarized = (PixelVector)(minuend - (bytes < limit ? bytes : limit));
        return pixels ^ ((pixels ^ solarized) & (PixelVector)(luma < threshold) & colorBits);
    });
}

}  // namespace

const SolarizeKernels solarizeKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
