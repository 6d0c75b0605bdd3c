// SPDX-License-Identifier: MIT
#include "filters/basic/edge_feather_kernels.h"

#include "simd/ints.h"
#include "simd/pixels.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

// A quotient by 100 without a division: floor(product * reciprocal / 2^22) for products up to 255 * 100.
constexpr std::uint32_t reciprocal = 41944;

static_assert([] {
    for (std::uint32_t product = 0; product <= 25500; ++product) {
        if (product * reciprocal >> 22 != product / 100) return false;
    }
    return true;
}());

Pixels scaled(Pixels pixels, Pixels factors) {
    const auto products = (Words)(pixels >> 24) * (Words)factors;
    const auto alphas = (Pixels)(mulhi(products, broadcast<Words>(reciprocal)) >> 6);
    return (pixels & 0x00FFFFFF) | alphas << 24;
}

void scaleAlpha(std::uint8_t* pixels, std::int64_t width, int factor) {
    const Pixels factors = broadcast<Pixels>(static_cast<std::uint32_t>(factor));
    mapPixels({pixels, pixels, width}, [=](Pixels vector) { return scaled(vector, factors); });
}

void scaleAlphaByColumn(std::uint8_t* pixels, std::int64_t width, const std::uint8_t* factors) {
    std::int64_t x = 0;
    for (; x + vectorPixels <= width; x += vectorPixels) {
        const auto wide = (Pixels)loadExtended(factors + x);
        store(pixels + 4 * x, scaled(load<Pixels>(pixels + 4 * x), wide));
    }
    for (; x < width; ++x) {
        std::uint8_t& alpha = pixels[4 * x + 3];
        alpha = static_cast<std::uint8_t>(alpha * factors[x] / 100);
    }
}

}  // namespace

const EdgeFeatherKernels edgeFeatherKernels{scaleAlpha, scaleAlphaByColumn};

}  // namespace VIREO_KERNEL_NAMESPACE
