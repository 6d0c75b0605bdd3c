// SPDX-License-Identifier: MIT
#include "filters/basic/solarize_kernels.h"

#include "framework/luma_vectors.h"
#include "simd/pixels.h"

#include <algorithm>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

constexpr std::uint32_t colorBits = 0x00FFFFFF;

void row(const PixelRow& row, int threshold) {
    // Blue carries the weight of red and red that of blue: old projects depend on it.
    const LumaVectors lumaOf(lumaWeight0, lumaWeight1, lumaWeight2);
    const Bytes limit = broadcast<Bytes>(static_cast<std::uint8_t>(std::clamp(threshold, 0, 255)));
    const Bytes minuend = broadcast<Bytes>(static_cast<std::uint8_t>(threshold));
    mapPixels(row, [=](Pixels pixels) {
        const auto luma = (Ints)lumaOf(pixels);
        const auto bytes = (Bytes)pixels;
        const auto solarized = (Pixels)(minuend - (bytes < limit ? bytes : limit));
        return pixels ^ ((pixels ^ solarized) & (Pixels)(luma < threshold) & colorBits);
    });
}

}  // namespace

const SolarizeKernels solarizeKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
