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
void mirror(const PixelRow& row) {
    constexpr std::int64_t size = sizeof(Pixel);
    const auto [source, destination, width, pastCaches] = row;
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

void row4(const PixelRow& row) {
    if (!streams(row)) return mirror<std::uint32_t>(row);
    const std::int64_t begin = pixelsBeforeStream(row);
    mirror<std::uint32_t>({row.source + 4 * (row.width - begin), row.destination, begin});
    std::int64_t i = begin;
    for (; i + vectorPixels <= row.width; i += vectorPixels) {
        const Pixels pixels = load<Pixels>(row.source + 4 * (row.width - i - vectorPixels));
        stream(row.destination + 4 * i, reversed(pixels, lanesOf<Pixels>));
    }
    mirror<std::uint32_t>({row.source, row.destination + 4 * i, row.width - i});
}

}  // namespace

const HorizontalFlipKernels horizontalFlipKernels{row4, mirror<std::uint64_t>, mirror<Unit16>};

}  // namespace VIREO_KERNEL_NAMESPACE
