// SPDX-License-Identifier: MIT
#include "host/utilkit/alpha_kernels.h"
#include "host/utilkit/utilkit.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

namespace {

const AlphaKernels& kernels = alphaKernelsTables.chosen();

}  // namespace

void SmoothAlpha(void* pixels, std::int32_t rowBytes, std::int32_t width, std::int32_t height) {
    if (width <= 0 || height <= 0) return;
    const std::unique_ptr<std::uint16_t[]> memory(new (std::nothrow) std::uint16_t[std::size_t(width) * 3]);
    if (memory == nullptr) return;
    std::uint16_t* above = memory.get();
    std::uint16_t* here = above + width;
    std::uint16_t* below = here + width;
    const auto row = [&](std::int64_t y) { return static_cast<std::uint8_t*>(pixels) + y * rowBytes; };

    kernels.sumAcross(row(0), here, width);
    std::copy_n(here, width, above);
    for (std::int64_t y = 0; y < height; ++y) {
        // The sums run one row ahead of what is overwritten.
        kernels.sumAcross(row(std::min<std::int64_t>(y + 1, height - 1)), below, width);
        kernels.soften(row(y), above, here, below, width);
        std::swap(above, here);
        std::swap(here, below);
    }
}
