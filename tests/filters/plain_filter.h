// SPDX-License-Identifier: MIT
// Filters against plain versions of themselves, which are slow and obvious. The program runs once for each
// instruction set.
#ifndef VIREO_TESTS_FILTERS_PLAIN_FILTER_H
#define VIREO_TESTS_FILTERS_PLAIN_FILTER_H

#include "tests/support/filter_under_test.h"

#include <algorithm>
#include <functional>
#include <variant>

using PlainPixel = std::function<std::uint32_t(std::uint32_t pixel)>;
using PlainFrame = std::function<Picture(const TestFrame& source)>;
/// What a filter has to make of a pixel, or of a frame where it looks further.
using PlainFilter = std::variant<PlainPixel, PlainFrame>;

/// Sets the filter to anything, may paint the source, whose pixels are random at first, and says what is due.
using Choice = std::function<PlainFilter(FilterUnderTest& filter, Picture& source, Random& random)>;

/// Over frames of every width up to some vectors, of awkward sizes and of long rows, in any field. Filters of
/// single pixels may overwrite their source.
void expectEqualsPlain(std::uint32_t id, const Choice& choose);

template <class Value, std::size_t count>
Value oneOf(const Value (&values)[count], Random& random) {
    return values[random() % count];
}

inline int between(int low, int high, Random& random) {
    return low + static_cast<int>(random() % static_cast<unsigned>(high - low + 1));
}

/// How far apart neighbours lie in the whole picture.
struct PlainSteps {
    int x, y;
};

/// Frames of half width or of half height, where the flags name one of them alone.
inline PlainSteps plainSteps(std::uint16_t fieldFlags) {
    const bool halfWidth = (fieldFlags & 0x0400) != 0, halfHeight = (fieldFlags & 0x0B00) != 0;
    return {halfWidth && !halfHeight ? 2 : 1, halfHeight && !halfWidth ? 2 : 1};
}

/// In thousandths, each rounded down by itself.
inline int lumaOf(std::uint32_t pixel) {
    return channelOf(pixel, 2) * 299 / 1000 + channelOf(pixel, 1) * 587 / 1000 +
           channelOf(pixel, 0) * 114 / 1000;
}

#endif
