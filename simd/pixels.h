// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_PIXELS_H
#define VIREO_SIMD_PIXELS_H

#include "simd/vectors.h"

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

inline constexpr std::int64_t vectorPixels = laneCount<Pixels>;

/// Writes map(Pixels) of `width` pixels. Source and destination are the same or apart.
template <class Map>
void mapPixels(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width, Map&& map) {
    std::int64_t x = 0;
    for (; x + vectorPixels <= width; x += vectorPixels) {
        store(destination + 4 * x, map(load<Pixels>(source + 4 * x)));
    }
    if (x == width) return;
    const auto rest = static_cast<std::size_t>(4 * (width - x));
    Pixels pixels{};
    std::memcpy(&pixels, source + 4 * x, rest);
    pixels = map(pixels);
    std::memcpy(destination + 4 * x, &pixels, rest);
}

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
