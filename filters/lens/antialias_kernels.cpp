// SPDX-License-Identifier: MIT
#include "filters/lens/antialias_kernels.h"

#include "filters/lens/antialias_average.h"
#include "simd/bytes.h"
#include "simd/pixels.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

using Rows = const std::uint8_t* const[3];  // Up, centre, down.

void pixels(Rows& rows, std::uint8_t* destination, std::int64_t begin, std::int64_t end) {
    const auto at = [&](int row, std::int64_t i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, rows[row] + 4 * i, 4);
        return pixel;
    };
    for (std::int64_t i = begin; i < end; ++i) {
        std::uint32_t average = halfway(at(1, i - 1), at(1, i));
        average = halfway(average, at(1, i + 1));
        average = halfway(average, at(0, i));
        average = halfway(average, at(2, i));
        std::memcpy(destination + 4 * i, &average, 4);
    }
}

/// The same for a register. Colours without their lowest bit have exact means; alpha is inverted, so that
/// means which round up round it down.
Pixels averages(Rows& rows, std::int64_t i) {
    constexpr std::uint32_t alpha = 0xFF000000;
    const auto at = [&](int row, std::int64_t pixel) {
        return (load<Pixels>(rows[row] + 4 * pixel) & halvedBits) ^ alpha;
    };
    const auto mean = [](Pixels a, Pixels b) { return (Pixels)avg((Bytes)a, (Bytes)b); };
    Pixels average = mean(at(1, i - 1), at(1, i));
    average = mean(average & halvedBits, at(1, i + 1));
    average = mean(average & halvedBits, at(0, i));
    return mean(average & halvedBits, at(2, i)) ^ alpha;
}

void row(const std::uint8_t* up, const std::uint8_t* centre, const std::uint8_t* down,
         std::uint8_t* destination, std::int64_t width) {
    Rows rows{up, centre, down};
    std::int64_t i = 0;
    // A row that is written over itself goes pixel by pixel, each with its left neighbour's average.
    const std::int64_t ahead = destination - centre;
    if (ahead <= -4 * (width + 1) || ahead >= 4 * (width + 1)) {
        for (; i + vectorPixels <= width; i += vectorPixels) store(destination + 4 * i, averages(rows, i));
    }
    pixels(rows, destination, i, width);
}

}  // namespace

const AntialiasKernels antialiasKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
