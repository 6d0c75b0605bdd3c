// SPDX-License-Identifier: MIT
#include "filters/lens/horizontal_flip_kernels.h"

#include "simd/pixels.h"

#include <cstring>
#include <utility>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

struct Unit16 {
    std::uint64_t halves[2];
};

template <class Pixel>
void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) {
    constexpr std::int64_t size = sizeof(Pixel);
    for (std::int64_t i = 0; i < width; ++i) {
        Pixel pixel;
        std::memcpy(&pixel, source + size * (width - 1 - i), sizeof pixel);
        std::memcpy(destination + size * i, &pixel, sizeof pixel);
    }
}

template <int... i>
Pixels reversed(Pixels pixels, std::integer_sequence<int, i...>) {
    return __builtin_shufflevector(pixels, pixels, vectorPixels - 1 - i...);
}

void row4PastCaches(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) {
    const auto misaligned = reinterpret_cast<std::uintptr_t>(destination) % vectorBytes;
    // Rows that begin within a pixel have no aligned vectors.
    std::int64_t begin = misaligned == 0 ? 0 : (vectorBytes - static_cast<std::int64_t>(misaligned)) / 4;
    if (misaligned % 4 != 0 || begin > width) begin = width;
    row<std::uint32_t>(source + 4 * (width - begin), destination, begin);
    std::int64_t i = begin;
    for (; i + vectorPixels <= width; i += vectorPixels) {
        const Pixels pixels = load<Pixels>(source + 4 * (width - i - vectorPixels));
        stream(destination + 4 * i, reversed(pixels, lanesOf<Pixels>));
    }
    fence();
    row<std::uint32_t>(source, destination + 4 * i, width - i);
}

}  // namespace

const HorizontalFlipKernels horizontalFlipKernels{row<std::uint32_t>, row<std::uint64_t>, row<Unit16>,
                                                  row4PastCaches};

}  // namespace VIREO_KERNEL_NAMESPACE
