// SPDX-License-Identifier: MIT
#include "host/hosting/worker_threads.h"
#include "host/utilkit/alpha_kernels.h"
#include "host/utilkit/utilkit.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <new>
#include <utility>

namespace {

const AlphaKernels& kernels = alphaKernelsTables.chosen();

}  // namespace

void SmoothAlpha(void* pixels, std::int32_t rowBytes, std::int32_t width, std::int32_t height) {
    if (width <= 0 || height <= 0) return;
    constexpr int leastRows = 64;
    constexpr std::size_t sumsOfPart = 4;
    // Rows that share bytes are softened one after another.
    const bool areApart = std::abs(std::int64_t{rowBytes}) >= 4 * std::int64_t{width};
    const hosting::LentParts parts(height, areApart ? leastRows : height);
    const auto step = static_cast<std::size_t>(width);
    const std::unique_ptr<std::uint16_t[]> memory(
        new (std::nothrow) std::uint16_t[step * sumsOfPart * static_cast<std::size_t>(parts.count())]);
    if (memory == nullptr) return;
    const auto sums = [&](int part, std::size_t i) {
        return memory.get() + step * (sumsOfPart * static_cast<std::size_t>(part) + i);
    };
    const auto row = [&](std::int64_t y) {
        return static_cast<std::uint8_t*>(pixels) + std::clamp<std::int64_t>(y, 0, height - 1) * rowBytes;
    };

    // What a part reads beyond its rows, before others overwrite it.
    for (int i = 0; i < parts.count(); ++i) {
        kernels.sumAcross(row(parts.begin(i) - 1), sums(i, 0), width);
        kernels.sumAcross(row(parts.end(i)), sums(i, 3), width);
    }
    const auto soften = [&](int part) {
        std::uint16_t* above = sums(part, 0);
        std::uint16_t* here = sums(part, 1);
        std::uint16_t* below = sums(part, 2);
        const int end = parts.end(part);
        kernels.sumAcross(row(parts.begin(part)), here, width);
        for (int y = parts.begin(part); y < end; ++y) {
            // The sums run one row ahead of what is overwritten.
            if (y + 1 < end) {
                kernels.sumAcross(row(y + 1), below, width);
            } else {
                below = sums(part, 3);
            }
            kernels.soften(row(y), above, here, below, width);
            std::swap(above, here);
            std::swap(here, below);
        }
    };
    parts.run(std::ref(soften));
}
