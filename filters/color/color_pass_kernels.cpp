// SPDX-License-Identifier: MIT
#include "filters/color/color_pass_kernels.h"

#include "framework/luma_weights.h"
#include "framework/pixel_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

constexpr std::uint32_t colorBits = 0x00FFFFFF;

void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
         const ColorPassSelection& selection) {
    const auto lowest = (ByteVector)(PixelVector{} + selection.lowest);
    const auto highest = (ByteVector)(PixelVector{} + selection.highest);
    const PixelVector greysFar = PixelVector{} - static_cast<std::uint32_t>(!selection.greysNear);
    const auto evenWeights = (WordVector)(PixelVector{} + (lumaWeight2 | lumaWeight0 << 16));
    const auto oddWeights = (WordVector)(PixelVector{} + lumaWeight1);
    mapPixels(source, destination, width, [=](PixelVector pixels) {
        const auto bytes = (ByteVector)pixels;
        const ByteVector capped = bytes < highest ? bytes : highest;
        const ByteVector nearest = capped > lowest ? capped : lowest;
        const auto near = (PixelVector)((PixelVector)nearest == pixels);
        const PixelVector turnsGrey = near ^ greysFar;

        const auto words = (WordVector)pixels;
        const auto weighted =
            (PixelVector)(multiplyHigh(words & 0xFF, evenWeights) + multiplyHigh(words >> 8, oddWeights));
        const PixelVector luma = (weighted + (weighted >> 16)) & 0xFFFF;
        const PixelVector grey = luma | luma << 8 | luma << 16;
        return pixels ^ ((pixels ^ grey) & turnsGrey & colorBits);
    });
}

}  // namespace

const ColorPassKernels colorPassKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
