// SPDX-License-Identifier: MIT
#include "filters/color/color_pass_kernels.h"

#include "framework/luma_vectors.h"
#include "simd/pixels.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

constexpr std::uint32_t colorBits = 0x00FFFFFF;

void row(const PixelRow& row, const ColorPassSelection& selection) {
    const auto lowest = (Bytes)broadcast<Pixels>(selection.lowest);
    const auto highest = (Bytes)broadcast<Pixels>(selection.highest);
    const Pixels greysFar = broadcast<Pixels>(selection.greysNear ? 0 : ~0U);
    const LumaVectors lumaOf(lumaWeight2, lumaWeight1, lumaWeight0);
    mapPixels(row, [=](Pixels pixels) {
        const auto bytes = (Bytes)pixels;
        const Bytes capped = bytes < highest ? bytes : highest;
        const Bytes nearest = capped > lowest ? capped : lowest;
        const auto near = (Pixels)((Pixels)nearest == pixels);
        const Pixels turnsGrey = near ^ greysFar;
        const Pixels luma = lumaOf(pixels);
        const Pixels grey = luma | luma << 8 | luma << 16;
        return pixels ^ ((pixels ^ grey) & turnsGrey & colorBits);
    });
}

}  // namespace

const ColorPassKernels colorPassKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
