// SPDX-License-Identifier: MIT
#include "filters/lens/sampler_kernels.h"

#include "filters/lens/gather.h"

#include <cstdlib>
#include <limits>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

/// blendPixels of every lane; a fraction stands in both halves of its lane.
PixelVector blend(PixelVector a, PixelVector b, WordVector fraction) {
    constexpr std::uint32_t even = 0x00FF00FF;
    const WordVector rest = 256 - fraction;
    const WordVector low = ((WordVector)(a & even) * rest + (WordVector)(b & even) * fraction) >> 8;
    const WordVector high = (WordVector)(a >> 8 & even) * rest + (WordVector)(b >> 8 & even) * fraction;
    return (PixelVector)low | ((PixelVector)high & ~even);
}

WordVector fractionOf(IntVector positions) {
    const auto fraction = (PixelVector)positions & 0xFF;
    return (WordVector)(fraction | fraction << 16);
}

IntVector load(const std::int32_t* positions) {
    IntVector vector;
    std::memcpy(&vector, positions, sizeof vector);
    return vector;
}

void row(const SampledPicture& picture, const std::int32_t* x, const std::int32_t* y,
         std::uint8_t* destination, std::int64_t width) {
    const auto sample = [&](std::int64_t i) {
        const std::uint32_t pixel = x[i] < 0 ? picture.fill : sampleWithEdgeFill(picture, x[i], y[i]);
        std::memcpy(destination + 4 * i, &pixel, sizeof pixel);
    };
    // Offsets count from the second pixel of the second row, where the pixels begin that have all neighbours.
    const bool offsetsFit =
        std::abs(picture.rowStep) * picture.height <= std::numeric_limits<std::int32_t>::max();
    const bool hasInterior = picture.width > 2 && picture.height > 2 && offsetsFit;
    const std::uint32_t interiorWidth = hasInterior ? static_cast<std::uint32_t>(picture.width - 2) << 8 : 0;
    const std::uint32_t interiorHeight =
        hasInterior ? static_cast<std::uint32_t>(picture.height - 2) << 8 : 0;
    const std::uint8_t* interior = picture.top + picture.rowStep + 4;
    const auto rowStep = static_cast<std::int32_t>(hasInterior ? picture.rowStep : 0);

    std::int64_t i = 0;
    for (; i + vectorPixels <= width; i += vectorPixels) {
        const IntVector xs = load(x + i) - 256;
        const IntVector ys = load(y + i) - 256;
        if (!allOf(((PixelVector)xs < interiorWidth) & ((PixelVector)ys < interiorHeight))) {
            for (std::int64_t lane = 0; lane < vectorPixels; ++lane) sample(i + lane);
            continue;
        }
        const IntVector offsets = (ys >> 8) * rowStep + (xs >> 8) * 4;
        const WordVector xFraction = fractionOf(xs);
        const PixelPairs upper = gatherPairs(interior, offsets);
        const PixelPairs lower = gatherPairs(interior + rowStep, offsets);
        storePixels(destination + 4 * i, blend(blend(upper.left, upper.right, xFraction),
                                               blend(lower.left, lower.right, xFraction), fractionOf(ys)));
    }
    for (; i < width; ++i) sample(i);
}

}  // namespace

const SamplerKernels samplerKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
