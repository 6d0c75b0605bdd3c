// SPDX-License-Identifier: MIT
#include "filters/color/color_pass_kernels.h"

#include "framework/luma_weights.h"
#include "framework/pixel_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

constexpr std::uint32_t colorBits = 0x00FFFFFF;

void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
         const ColorPassSelection& selection) {
    const auto color = (ByteVector)(PixelVector{} + selection.color);
    const ByteVector tolerance = ByteVector{} + selection.tolerance;
    const PixelVector greysNear = PixelVector{} - static_cast<std::uint32_t>(selection.greysNear);
    const auto evenWeights = (WordVector)(PixelVector{} + (lumaWeight2 | lumaWeight0 << 16));
    const auto oddWeights = (WordVector)(PixelVector{} + lumaWeight1);
    mapPixels(source, destination, width, [=](PixelVector pixels) {
        const auto bytes = (ByteVector)pixels;
        const ByteVector distances = bytes > color ? bytes - color : color - bytes;
        const auto far = (PixelVector)((PixelVector)(distances > tolerance) & colorBits) != 0;
        const auto turnsGrey = (PixelVector)far ^ greysNear;

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
