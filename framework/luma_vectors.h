// SPDX-License-Identifier: MIT
// Luminance in kernel files, a vector of pixels at a time.
#ifndef VIREO_FRAMEWORK_LUMA_VECTORS_H
#define VIREO_FRAMEWORK_LUMA_VECTORS_H

#include "framework/luma_weights.h"
#include "simd/words.h"

namespace VIREO_KERNEL_NAMESPACE {

/// The sum of the three weighted bytes of each pixel, with the weights of blue, green and red.
class LumaVectors {
    using Words = simd::Words;
    using Pixels = simd::Pixels;

public:
    LumaVectors(std::uint32_t blue, std::uint32_t green, std::uint32_t red)
        : evenWeights_((Words)simd::broadcast<Pixels>(blue | red << 16)),
          oddWeights_((Words)simd::broadcast<Pixels>(green)) {}

    Pixels operator()(Pixels pixels) const {
        const auto words = (Words)pixels;
        const auto weighted =
            (Pixels)(simd::mulhi(words & 0xFF, evenWeights_) + simd::mulhi(words >> 8, oddWeights_));
        return (weighted & 0xFFFF) + (weighted >> 16);
    }

private:
    Words evenWeights_;
    Words oddWeights_;
};

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
