// SPDX-License-Identifier: MIT
#include "filters/lens/sampler_kernels.h"

#include "simd/gather.h"
#include "simd/ints.h"
#include "simd/pixels.h"

#include <cstdlib>
#include <limits>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// blendPixels of every lane; a fraction stands in both halves of its lane.
Pixels mixed(Pixels a, Pixels b, Words fraction) {
    constexpr std::uint32_t even = 0x00FF00FF;
    const Words rest = 256 - fraction;
    const Words low = ((Words)(a & even) * rest + (Words)(b & even) * fraction) >> 8;
    const Words high = (Words)(a >> 8 & even) * rest + (Words)(b >> 8 & even) * fraction;
    return (Pixels)low | ((Pixels)high & ~even);
}

Words fractionOf(Ints positions) {
    const auto fraction = (Pixels)positions & 0xFF;
    return (Words)(fraction | fraction << 16);
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
        const Ints xs = load<Ints>(x + i) - 256;
        const Ints ys = load<Ints>(y + i) - 256;
        if (!allTrue(((Pixels)xs < interiorWidth) & ((Pixels)ys < interiorHeight))) {
            for (std::int64_t lane = 0; lane < vectorPixels; ++lane) sample(i + lane);
            continue;
        }
        const Ints offsets = (ys >> 8) * rowStep + (xs >> 8) * 4;
        const Words xFraction = fractionOf(xs);
        const PixelPairs upper = gatherPairs(interior, offsets);
        const PixelPairs lower = gatherPairs(interior + rowStep, offsets);
        store(destination + 4 * i, mixed(mixed(upper.left, upper.right, xFraction),
                                         mixed(lower.left, lower.right, xFraction), fractionOf(ys)));
    }
    for (; i < width; ++i) sample(i);
}

}  // namespace

const SamplerKernels samplerKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
