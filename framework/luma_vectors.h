// SPDX-License-Identifier: MIT
// Luminance in kernel files, a vector of pixels at a time.
#ifndef VIREO_FRAMEWORK_LUMA_VECTORS_H
#define VIREO_FRAMEWORK_LUMA_VECTORS_H

#include "framework/luma_weights.h"
#include "framework/pixel_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {

/// The sum of the three weighted bytes of each pixel, with the weights of blue, green and red.
class LumaVectors {
public:
    LumaVectors(std::uint32_t blue, std::uint32_t green, std::uint32_t red)
        : evenWeights_((WordVector)(PixelVector{} + (blue | red << 16))),
          oddWeights_((WordVector)(PixelVector{} + green)) {}

    PixelVector operator()(PixelVector pixels) const {
        const auto words = (WordVector)pixels;
        const auto weighted =
            (PixelVector)(multiplyHigh(words & 0xFF, evenWeights_) + multiplyHigh(words >> 8, oddWeights_));
        return (weighted & 0xFFFF) + (weighted >> 16);
    }

private:
    WordVector evenWeights_;
    WordVector oddWeights_;
};

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
