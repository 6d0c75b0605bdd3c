// SPDX-License-Identifier: MIT
#include "host/fxkit/fxkit.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

/// The weights of the pixels at distances 0 to `reach`; both sides together weigh 1.
std::vector<double> gaussianWeights(int reach) {
    std::vector<double> weights(static_cast<std::size_t>(reach) + 1, 1.0);
    double sum = 1;
    for (int i = 1; i <= reach; ++i) {
        weights[i] = std::exp(-4.5 * i * i / (1.0 * reach * reach));
        sum += 2 * weights[i];
    }
    for (double& weight : weights) weight /= sum;
    return weights;
}

/// Blurs `count` values that lie `step` apart.
template <class T>
void blurLine(const T* from, double* to, std::int64_t step, int count, const std::vector<double>& weights) {
    const int reach = static_cast<int>(weights.size()) - 1;
    for (int x = 0; x < count; ++x) {
        double sum = weights[0] * from[x * step];
        for (int i = 1; i <= reach; ++i) {
            sum += weights[i] *
                   (1.0 * from[std::max(x - i, 0) * step] + from[std::min(x + i, count - 1) * step]);
        }
        to[x * step] = sum;
    }
}

}  // namespace

void FX_GaussianBlur(const void* source, int32_t sourceRowBytes, int32_t sourceWidth, int32_t sourceHeight,
                     int32_t, void* destination, int32_t destinationRowBytes, int32_t destinationWidth,
                     int32_t destinationHeight, int32_t, double rx, double ry, int32_t, int32_t, int32_t,
                     int32_t) {
    const int width = std::min(sourceWidth, destinationWidth);
    const int height = std::min(sourceHeight, destinationHeight);
    if (width <= 0 || height <= 0) return;
    const auto* pixels = static_cast<const std::uint8_t*>(source);
    auto* result = static_cast<std::uint8_t*>(destination);
    const std::int64_t rowValues = std::int64_t{4} * width;
    std::vector<double> across(static_cast<std::size_t>(rowValues) * height);
    std::vector<double> down(across.size());
    const std::vector<double> weightsAcross = gaussianWeights(static_cast<int>(rx));
    const std::vector<double> weightsDown = gaussianWeights(static_cast<int>(ry));
    for (int y = 0; y < height; ++y) {
        for (int channel = 0; channel < 4; ++channel) {
            blurLine(pixels + std::int64_t{y} * sourceRowBytes + channel,
                     across.data() + y * rowValues + channel, 4, width, weightsAcross);
        }
    }
    for (std::int64_t x = 0; x < rowValues; ++x) {
        blurLine(across.data() + x, down.data() + x, rowValues, height, weightsDown);
    }
    for (int y = 0; y < height; ++y) {
        for (std::int64_t x = 0; x < rowValues; ++x) {
            result[std::int64_t{y} * destinationRowBytes + x] =
                static_cast<std::uint8_t>(down[y * rowValues + x] + 0.5);
        }
    }
}
