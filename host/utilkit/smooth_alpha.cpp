// SPDX-License-Identifier: MIT
#include "host/utilkit/utilkit.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>

namespace {

/// 1 2 1 along a row. At most 4 * 255.
void sumAcross(const std::uint8_t* row, std::uint16_t* sums, std::int64_t width) {
    const auto alpha = [&](std::int64_t x) { return row[4 * std::clamp<std::int64_t>(x, 0, width - 1) + 3]; };
    for (std::int64_t x = 0; x < width; ++x) {
        sums[x] = static_cast<std::uint16_t>(alpha(x - 1) + 2 * alpha(x) + alpha(x + 1));
    }
}

}  // namespace

void SmoothAlpha(void* pixels, std::int32_t rowBytes, std::int32_t width, std::int32_t height) {
    if (width <= 0 || height <= 0) return;
    const std::unique_ptr<std::uint16_t[]> memory(new (std::nothrow) std::uint16_t[std::size_t(width) * 3]);
    if (memory == nullptr) return;
    std::uint16_t* above = memory.get();
    std::uint16_t* here = above + width;
    std::uint16_t* below = here + width;
    const auto row = [&](std::int64_t y) { return static_cast<std::uint8_t*>(pixels) + y * rowBytes; };

    sumAcross(row(0), here, width);
    std::copy_n(here, width, above);
    for (std::int64_t y = 0; y < height; ++y) {
        sumAcross(row(std::min<std::int64_t>(y + 1, height - 1)), below, width);
        for (std::int64_t x = 0; x < width; ++x) {
            row(y)[4 * x + 3] = static_cast<std::uint8_t>((above[x] + 2 * here[x] + below[x] + 8) / 16);
        }
        std::swap(above, here);
        std::swap(here, below);
    }
}
