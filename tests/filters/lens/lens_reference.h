// SPDX-License-Identifier: MIT
// What the plain versions of the two lens filters share.
#ifndef VIREO_TESTS_FILTERS_LENS_LENS_REFERENCE_H
#define VIREO_TESTS_FILTERS_LENS_LENS_REFERENCE_H

#include "tests/support/test_frame.h"

#include <cmath>

inline std::uint32_t referenceBlend(std::uint32_t a, std::uint32_t b, std::int64_t fraction) {
    const auto t = static_cast<int>(fraction >> 8);
    int channels[4];
    for (int i = 0; i < 4; ++i) {
        const int difference = channelOf(b, i) - channelOf(a, i);
        channels[i] = channelOf(a, i) + static_cast<int>(std::floor(difference * t / 256.0));
    }
    return pixelOf(channels[0], channels[1], channels[2], channels[3]);
}

/// A 16.16 position inside the picture, whose row 0 is the last in memory.
inline std::uint32_t referenceSample(const Picture& picture, std::uint32_t fill, std::int64_t x,
                                     std::int64_t y, bool fade) {
    const auto column = static_cast<int>(x / 65536), row = static_cast<int>(y / 65536);
    const std::int64_t xFraction = x % 65536, yFraction = y % 65536;
    const auto at = [&](int dx, int dy) { return picture.at(column + dx, picture.height - 1 - row - dy); };
    const bool firstOrLast =
        column == 0 || column == picture.width - 1 || row == 0 || row == picture.height - 1;
    if (firstOrLast && !fade) return at(0, 0);
    if (column == 0) return referenceBlend(fill, at(0, 0), xFraction);
    if (column == picture.width - 1) return referenceBlend(at(0, 0), fill, xFraction);
    if (row == 0) return referenceBlend(fill, at(0, 0), yFraction);
    if (row == picture.height - 1) return referenceBlend(at(0, 0), fill, yFraction);
    return referenceBlend(referenceBlend(at(0, 0), at(1, 0), xFraction),
                          referenceBlend(at(0, 1), at(1, 1), xFraction), yFraction);
}

/// How far apart neighbours lie in the whole picture.
struct ReferenceSteps {
    int x, y;
};

/// Frames of half width or of half height, where the flags name one of them alone.
inline ReferenceSteps referenceSteps(std::uint16_t fieldFlags) {
    const bool halfWidth = (fieldFlags & 0x0400) != 0, halfHeight = (fieldFlags & 0x0B00) != 0;
    return {halfWidth && !halfHeight ? 2 : 1, halfHeight && !halfWidth ? 2 : 1};
}

inline constexpr std::uint16_t fieldFlagCases[] = {0,      0x0100, 0x0200, 0x0400, 0x0800,
                                                   0x0500, 0x0C00, 0xF0FF, 0x0300};

#endif
