// SPDX-License-Identifier: MIT
#include "filters/warp/color_replace_kernels.h"

#include "framework/luma_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

constexpr std::uint32_t colorBits = 0x00FFFFFF;

/// Writes colorOf(pixels) with the pixels' own alpha where they are close to the target.
template <class ColorOf>
void replaceClose(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
                  const ColorSwap& swap, ColorOf&& colorOf) {
    const auto target = (ByteVector)(PixelVector{} + swap.target);
    const ByteVector tolerance = ByteVector{} + swap.tolerance;
    mapPixels(source, destination, width, [&](PixelVector pixels) {
        const auto bytes = (ByteVector)pixels;
        const ByteVector difference = bytes > target ? bytes - target : target - bytes;
        const auto farBytes = (PixelVector)(difference > tolerance);
        const auto close = (PixelVector)((farBytes & colorBits) == 0);
        return pixels ^ ((pixels ^ colorOf(pixels)) & close & colorBits);
    });
}

void solid(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width, const ColorSwap& swap) {
    const PixelVector replacement = PixelVector{} + swap.replacement;
    replaceClose(source, destination, width, swap, [=](PixelVector) { return replacement; });
}

void shaded(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
            const ColorSwap& swap) {
    const LumaVectors lumaOf(lumaWeight2, lumaWeight1, lumaWeight0);
    const auto evenBytes = (WordVector)(PixelVector{} + (swap.replacement & 0x00FF00FF));
    const auto oddBytes = (WordVector)(PixelVector{} + (swap.replacement >> 8 & 0x000000FF));
    replaceClose(source, destination, width, swap, [=](PixelVector pixels) {
        const PixelVector luma = lumaOf(pixels);
        const auto lumaWords = (WordVector)(luma | luma << 16);
        return (PixelVector)((evenBytes * lumaWords >> 8) | (oddBytes * lumaWords & 0xFF00));
    });
}

}  // namespace

const ColorReplaceKernels colorReplaceKernels{solid, shaded};

}  // namespace VIREO_KERNEL_NAMESPACE
