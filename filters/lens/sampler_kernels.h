// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_SAMPLER_KERNELS_H
#define VIREO_FILTERS_LENS_SAMPLER_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>
#include <cstring>

/// Pixels of 4 bytes, the picture's top row first. Positions in it count 1/256 pixel: finer ones never show.
struct SampledPicture {
    /// Where positions end that 32 bits hold.
    static constexpr std::int64_t largestSize = 0x7FFFFF;

    const std::uint8_t* top;
    std::int64_t rowStep;  ///< Bytes from one row to the next below.
    std::int32_t width;
    std::int32_t height;
    std::uint32_t fill;

    const std::uint8_t* at(std::int32_t column, std::int32_t row) const {
        return top + row * rowStep + std::int64_t{4} * column;
    }
};

/// Each channel a + floor((b - a) * fraction / 256), for a fraction of 0..255.
inline std::uint32_t blendPixels(std::uint32_t a, std::uint32_t b, std::uint32_t fraction) {
    constexpr std::uint32_t even = 0x00FF00FF;
    const std::uint32_t rest = 256 - fraction;
    return (((a & even) * rest + (b & even) * fraction) >> 8 & even) |
           (((a >> 8 & even) * rest + (b >> 8 & even) * fraction) & ~even);
}

/// The pixel at a position inside the picture. Border pixels fade into the fill pixel by the position's
/// fraction, or are copied where `fade` is off; the others blend with their right and lower neighbours.
inline std::uint32_t sampleWithEdgeFill(const SampledPicture& picture, std::int32_t x, std::int32_t y,
                                        bool fade = true) {
    const auto load = [](const std::uint8_t* address) {
        std::uint32_t pixel;
        std::memcpy(&pixel, address, sizeof pixel);
        return pixel;
    };
    const std::int32_t column = x >> 8;
    const std::int32_t row = y >> 8;
    const std::uint32_t xFraction = x & 0xFF;
    const std::uint32_t yFraction = y & 0xFF;
    const std::uint8_t* address = picture.at(column, row);
    const std::uint32_t pixel = load(address);
    const bool border = column == 0 || column == picture.width - 1 || row == 0 || row == picture.height - 1;
    if (border && !fade) return pixel;
    if (column == 0) return blendPixels(picture.fill, pixel, xFraction);
    if (column == picture.width - 1) return blendPixels(pixel, picture.fill, xFraction);
    if (row == 0) return blendPixels(picture.fill, pixel, yFraction);
    if (row == picture.height - 1) return blendPixels(pixel, picture.fill, yFraction);
    const std::uint8_t* below = address + picture.rowStep;
    return blendPixels(blendPixels(pixel, load(address + 4), xFraction),
                       blendPixels(load(below), load(below + 4), xFraction), yFraction);
}

struct SamplerKernels {
    /// Writes `width` pixels: sampleWithEdgeFill at each position, the fill pixel where x is negative.
    /// Other positions lie inside the picture.
    void (*row)(const SampledPicture& picture, const std::int32_t* x, const std::int32_t* y,
                std::uint8_t* destination, std::int64_t width);
};

VIREO_KERNEL_TABLES(SamplerKernels, samplerKernels)

#endif
