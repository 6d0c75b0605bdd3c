// SPDX-License-Identifier: MIT
#include "filters/warp/color_replace_kernels.h"

#include "framework/luma_vectors.h"
#include "simd/pixels.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

constexpr std::uint32_t colorBits = 0x00FFFFFF;

/// Writes colorOf(pixels) with the pixels' own alpha where they are close to the target.
template <class ColorOf>
void replaceClose(const PixelRow& row, const ColorSwap& swap, ColorOf&& colorOf) {
    const auto target = (Bytes)broadcast<Pixels>(swap.target);
    const Bytes tolerance = broadcast<Bytes>(swap.tolerance);
    mapPixels(row, [&](Pixels pixels) {
        const auto bytes = (Bytes)pixels;
        const Bytes difference = bytes > target ? bytes - target : target - bytes;
        const auto farBytes = (Pixels)(difference > tolerance);
        const auto close = (Pixels)((farBytes & colorBits) == 0);
        return pixels ^ ((pixels ^ colorOf(pixels)) & close & colorBits);
    });
}

void solid(const PixelRow& row, const ColorSwap& swap) {
    const Pixels replacement = broadcast<Pixels>(swap.replacement);
    replaceClose(row, swap, [=](Pixels) { return replacement; });
}

void shaded(const PixelRow& row, const ColorSwap& swap) {
    const LumaVectors lumaOf(lumaWeight2, lumaWeight1, lumaWeight0);
    const auto evenBytes = (Words)broadcast<Pixels>(swap.replacement & 0x00FF00FF);
    const auto oddBytes = (Words)broadcast<Pixels>(swap.replacement >> 8 & 0x000000FF);
    replaceClose(row, swap, [=](Pixels pixels) {
        const Pixels luma = lumaOf(pixels);
        const auto lumaWords = (Words)(luma | luma << 16);
        return (Pixels)((evenBytes * lumaWords >> 8) | (oddBytes * lumaWords & 0xFF00));
    });
}

}  // namespace

const ColorReplaceKernels colorReplaceKernels{solid, shaded};

}  // namespace VIREO_KERNEL_NAMESPACE
