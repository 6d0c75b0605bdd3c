// SPDX-License-Identifier: MIT
// Filters that look at one pixel at a time against plain versions of themselves, which are slow and obvious.
// The program runs once for each instruction set.
#ifndef VIREO_TESTS_FILTERS_PLAIN_FILTER_H
#define VIREO_TESTS_FILTERS_PLAIN_FILTER_H

#include "tests/support/filter_under_test.h"

#include <algorithm>
#include <functional>

/// What a filter has to make of a pixel.
using PlainFilter = std::function<std::uint32_t(std::uint32_t pixel)>;

/// Sets the filter to anything, may paint the source, whose pixels are random at first, and says what is due.
using Choice = std::function<PlainFilter(FilterUnderTest& filter, Picture& source, Random& random)>;

/// Over frames of every width up to some vectors, of awkward sizes and of long rows, and in place.
void expectEqualsPlain(std::uint32_t id, const Choice& choose);

template <class Value, std::size_t count>
Value oneOf(const Value (&values)[count], Random& random) {
    return values[random() % count];
}

/// In thousandths, each rounded down by itself.
inline int lumaOf(std::uint32_t pixel) {
    return channelOf(pixel, 2) * 299 / 1000 + channelOf(pixel, 1) * 587 / 1000 +
           channelOf(pixel, 0) * 114 / 1000;
}

#endif
