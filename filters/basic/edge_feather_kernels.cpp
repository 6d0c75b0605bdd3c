// SPDX-License-Identifier: MIT
#include "filters/basic/edge_feather_kernels.h"

#include "framework/pixel_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

// A quotient by 100 without a division: floor(product * reciprocal / 2^22) for products up to 255 * 100.
constexpr std::uint32_t reciprocal = 41944;

static_assert([] {
    for (std::uint32_t product = 0; product <= 25500; ++product) {
        if (product * reciprocal >> 22 != product / 100) return false;
    }
    return true;
}());

PixelVector scaled(PixelVector pixels, PixelVector factors) {
    const auto products = (WordVector)(pixels >> 24) * (WordVector)factors;
    const auto alphas =
        (PixelVector)(multiplyHigh(products, WordVector{} + static_cast<std::uint16_t>(reciprocal)) >> 6);
    return (pixels & 0x00FFFFFF) | alphas << 24;
}

void scaleAlpha(std::uint8_t* pixels, std::int64_t width, int factor) {
    const PixelVector factors = PixelVector{} + static_cast<std::uint32_t>(factor);
    mapPixels(pixels, pixels, width, [=](PixelVector vector) { return scaled(vector, factors); });
}

void scaleAlphaByColumn(std::uint8_t* pixels, std::int64_t width, const std::uint8_t* factors) {
    typedef std::uint8_t Narrow __attribute__((vector_size(vectorPixels)));
    std::int64_t x = 0;
    for (; x + vectorPixels <= width; x += vectorPixels) {
        Narrow narrow;
        std::memcpy(&narrow, factors + x, sizeof narrow);
        const auto wide = __builtin_convertvector(narrow, PixelVector);
        storePixels(pixels + 4 * x, scaled(loadPixels(pixels + 4 * x), wide));
    }
    for (; x < width; ++x) {
        std::uint8_t& alpha = pixels[4 * x + 3];
        alpha = static_cast<std::uint8_t>(alpha * factors[x] / 100);
    }
}

}  // namespace

const EdgeFeatherKernels edgeFeatherKernels{scaleAlpha, scaleAlphaByColumn};

}  // namespace VIREO_KERNEL_NAMESPACE
