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

/// In every 16 bytes of the four registers the rows of four by four pixels become columns.
template <class V>
void transposeSquares(V (&rows)[4]) {
    using Pairs = Vector<std::uint64_t, sizeof(V)>;
    using Singles = Vector<std::uint32_t, sizeof(V)>;
    const auto row = [&](int i) { return (Singles)rows[i]; };
    const auto low01 = (Pairs)unpacklo(row(0), row(1));
    const auto high01 = (Pairs)unpackhi(row(0), row(1));
    const auto low23 = (Pairs)unpacklo(row(2), row(3));
    const auto high23 = (Pairs)unpackhi(row(2), row(3));
    rows[0] = (V)unpacklo(low01, low23);
    rows[1] = (V)unpackhi(low01, low23);
    rows[2] = (V)unpacklo(high01, high23);
    rows[3] = (V)unpackhi(high01, high23);
}

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
