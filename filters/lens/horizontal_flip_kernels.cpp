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

/// Asks ahead for the next row's pixels, which lie as far up as a row is long.
template <bool pastCaches>
void mirrorVectors(const PixelRow& row, std::int64_t begin) {
    constexpr std::int64_t blockPixels = cacheLineBytes / 4;
    std::int64_t i = begin;
    for (; i + blockPixels <= row.width; i += blockPixels) {
        const std::uint8_t* const source = row.source + 4 * (row.width - i);
        std::uint8_t* const destination = row.destination + 4 * i;
        __builtin_prefetch(source + 4 * row.width - 1);
        if constexpr (!pastCaches) prefetchAhead<cacheLineBytes>(destination);
        for (int at = 0; at < cacheLineBytes; at += vectorBytes) {
            const auto pixels = load<Pixels>(source - at - vectorBytes);
            storeOrStream<pastCaches>(destination + at, reversed(pixels, lanesOf<Pixels>));
        }
    }
    mirror<std::uint32_t>({row.source, row.destination + 4 * i, row.width - i});
}

void row4(const PixelRow& row) {
    if (!streams(row)) return mirrorVectors<false>(row, 0);
    const std::int64_t begin = pixelsBeforeStream(row);
    mirror<std::uint32_t>({row.source + 4 * (row.width - begin), row.destination, begin});
    mirrorVectors<true>(row, begin);
}

}  // namespace

const HorizontalFlipKernels horizontalFlipKernels{row4, mirror<std::uint64_t>, mirror<Unit16>};

}  // namespace VIREO_KERNEL_NAMESPACE
