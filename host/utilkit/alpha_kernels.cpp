// SPDX-License-Identifier: MIT
#include "host/utilkit/alpha_kernels.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

std::uint32_t pixelAt(const std::uint8_t* row, std::int64_t x) {
    std::uint32_t pixel;
    std::memcpy(&pixel, row + 4 * x, 4);
    return pixel;
}

std::uint32_t alphaAt(const std::uint8_t* row, std::int64_t x) { return pixelAt(row, x) >> 24; }

void sumAcross(const std::uint8_t* row, std::uint16_t* sums, std::int64_t width) {
    const std::int64_t last = width - 1;
    sums[0] = static_cast<std::uint16_t>(3 * alphaAt(row, 0) + alphaAt(row, last > 0 ? 1 : 0));
    for (std::int64_t x = 1; x < last; ++x) {
        sums[x] = static_cast<std::uint16_t>(alphaAt(row, x - 1) + 2 * alphaAt(row, x) + alphaAt(row, x + 1));
    }
    if (last > 0) sums[last] = static_cast<std::uint16_t>(alphaAt(row, last - 1) + 3 * alphaAt(row, last));
}

void soften(std::uint8_t* row, const std::uint16_t* above, const std::uint16_t* here,
            const std::uint16_t* below, std::int64_t width) {
    for (std::int64_t x = 0; x < width; ++x) {
        const std::uint32_t sum = 8U + above[x] + 2U * here[x] + below[x];
        const std::uint32_t pixel = (pixelAt(row, x) & 0x00FFFFFF) | sum >> 4 << 24;
        std::memcpy(row + 4 * x, &pixel, 4);
    }
}

}  // namespace

const AlphaKernels alphaKernels{sumAcross, soften};

}  // namespace VIREO_KERNEL_NAMESPACE
