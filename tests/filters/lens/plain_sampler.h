// SPDX-License-Identifier: MIT
// What the plain versions of the two lens filters share. Rows count from the last in memory.
#ifndef VIREO_TESTS_FILTERS_LENS_PLAIN_SAMPLER_H
#define VIREO_TESTS_FILTERS_LENS_PLAIN_SAMPLER_H

#include "tests/support/test_frame.h"

/// Where a pixel is taken from, 16.16.
struct PlainPlace {
    std::int64_t x, y;
    bool fades = true;  ///< Whether border pixels do.
};

/// `fraction` is 16 bits wide, of which the upper 8 count.
inline std::uint32_t plainBlend(std::uint32_t a, std::uint32_t b, std::int64_t fraction) {
    const auto channel = [&](int i) {
        const int way = channelOf(b, i) - channelOf(a, i);
        return channelOf(a, i) + (way * static_cast<int>(fraction / 256) >> 8);
    };
    return pixelOf(channel(0), channel(1), channel(2), channel(3));
}

inline std::uint32_t plainSample(const Picture& picture, std::uint32_t fill, const PlainPlace& place) {
    if (place.x < 0 || place.y < 0 || place.x >> 16 >= picture.width || place.y >> 16 >= picture.height)
        return fill;
    const auto column = static_cast<int>(place.x >> 16), row = static_cast<int>(place.y >> 16);
    const auto x = place.x & 0xFFFF, y = place.y & 0xFFFF;
    const auto at = [&](int right, int below) {
        return picture.nearest(column + right, picture.height - 1 - row - below);
    };
    const bool atEndOfRow = column == picture.width - 1, inLastRow = row == picture.height - 1;
    if (!place.fades && (column == 0 || atEndOfRow || row == 0 || inLastRow)) return at(0, 0);
    if (column == 0) return plainBlend(fill, at(0, 0), x);
    if (atEndOfRow) return plainBlend(at(0, 0), fill, x);
    if (row == 0) return plainBlend(fill, at(0, 0), y);
    if (inLastRow) return plainBlend(at(0, 0), fill, y);
    return plainBlend(plainBlend(at(0, 0), at(1, 0), x), plainBlend(at(0, 1), at(1, 1), x), y);
}

template <class PlaceOf>
Picture plainlySampled(const Picture& picture, bool opaque, std::uint32_t color, const PlaceOf& placeOf) {
    const std::uint32_t fill =
        opaque ? pixelOf(channelOf(color, 2), channelOf(color, 1), channelOf(color, 0), 255) : 0;
    Picture result{picture.width, picture.height};
    for (int row = 0; row < picture.height; ++row) {
        for (int column = 0; column < picture.width; ++column) {
            result.at(column, picture.height - 1 - row) = plainSample(picture, fill, placeOf(column, row));
        }
    }
    return result;
}

#endif
