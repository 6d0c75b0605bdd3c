// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_PIXELS_H
#define VIREO_SIMD_PIXELS_H

#include "simd/pixel_row.h"
#include "simd/vectors.h"

#include <algorithm>

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

inline constexpr std::int64_t vectorPixels = laneCount<Pixels>;

/// Whether a row is to be written past the caches, and can be: only its whole pixels are.
inline bool streams(const PixelRow& row) {
    return row.pastCaches && reinterpret_cast<std::uintptr_t>(row.destination) % 4 == 0;
}

/// How many pixels of a row that streams come before the first whole vector of memory.
inline std::int64_t pixelsBeforeStream(const PixelRow& row) {
    const auto address = reinterpret_cast<std::uintptr_t>(row.destination);
    return std::min(static_cast<std::int64_t>(-address % vectorBytes / 4), row.width);
}

/// Writes a row by blocks of so many pixels, whole lines of the cache. block(source, destination, put) makes
/// one and writes each of its vectors with put(address, vector).
template <std::int64_t blockPixels, class Block>
void mapBlocks(const PixelRow& row, Block&& block) {
    constexpr std::int64_t blockBytes = 4 * blockPixels;
    static_assert(blockBytes % cacheLineBytes == 0);
    constexpr auto putStored = [](std::uint8_t* address, auto vector) { store(address, vector); };
    constexpr auto putStreamed = [](std::uint8_t* address, auto vector) { stream(address, vector); };
    const std::uint8_t* const source = row.source;
    std::uint8_t* const destination = row.destination;
    const std::int64_t end = 4 * row.width;
    const auto few = [&](std::int64_t at, std::int64_t bytes) {
        if (bytes == 0) return;
        std::uint8_t copy[blockBytes] = {};
        std::memcpy(copy, source + at, static_cast<std::size_t>(bytes));
        block(copy, copy, putStored);
        std::memcpy(destination + at, copy, static_cast<std::size_t>(bytes));
    };
    std::int64_t at = 0;
    if (streams(row)) {
        at = 4 * pixelsBeforeStream(row);
        few(0, at);
        for (; at + blockBytes <= end; at += blockBytes) {
            prefetchAhead<blockBytes>(source + at);
            block(source + at, destination + at, putStreamed);
        }
    } else {
        for (; at + blockBytes <= end; at += blockBytes) {
            prefetchAhead<blockBytes>(source + at);
            prefetchAhead<blockBytes>(destination + at);
            block(source + at, destination + at, putStored);
        }
    }
    few(at, end - at);
}

/// Writes map(Pixels) of a row's pixels.
template <class Map>
void mapPixels(const PixelRow& row, Map&& map) {
    constexpr int blockBytes = cacheLineBytes;
    mapBlocks<blockBytes / 4>(row,
                              [&](const std::uint8_t* source, std::uint8_t* destination, const auto& put) {
                                  for (int i = 0; i < blockBytes; i += vectorBytes) {
                                      put(destination + i, map(load<Pixels>(source + i)));
                                  }
                              });
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
