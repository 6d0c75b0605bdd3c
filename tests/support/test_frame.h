// SPDX-License-Identifier: MIT
// Frames as awkward as a host may hand them out, and plain pictures for the slow versions of the filters.
#ifndef VIREO_TESTS_SUPPORT_TEST_FRAME_H
#define VIREO_TESTS_SUPPORT_TEST_FRAME_H

#include "host/pixkit/frame_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

using Random = std::mt19937;

/// A pixel word: blue in the low byte, then green, red, alpha.
constexpr std::uint32_t pixelOf(int blue, int green, int red, int alpha) {
    return static_cast<std::uint32_t>(blue) | static_cast<std::uint32_t>(green) << 8 |
           static_cast<std::uint32_t>(red) << 16 | static_cast<std::uint32_t>(alpha) << 24;
}

/// Channel 0 to 3 of a pixel word.
constexpr int channelOf(std::uint32_t pixel, int channel) {
    return static_cast<int>(pixel >> 8 * channel & 0xFF);
}

/// What the slow versions work on. Row 0 is the first in memory.
struct Picture {
    int width = 0;
    int height = 0;
    std::vector<std::uint32_t> pixels =
        std::vector<std::uint32_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));

    std::uint32_t& at(int x, int row) {
        return pixels[static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
                      static_cast<std::size_t>(x)];
    }
    std::uint32_t at(int x, int row) const { return const_cast<Picture&>(*this).at(x, row); }
    /// Beyond its borders a picture goes on as it ends.
    std::uint32_t nearest(int x, int row) const {
        return at(std::clamp(x, 0, width - 1), std::clamp(row, 0, height - 1));
    }
    std::uint32_t* row(int row) { return pixels.data() + std::ptrdiff_t{row} * width; }
    bool operator==(const Picture&) const = default;
};

Picture noise(int width, int height, Random& random);

struct Geometry {
    int width = 1;
    int height = 1;
    int padding = 0;  ///< Bytes between the end of a row and the next.
    int left = 0;
    int top = 0;
    bool negativeRowBytes = false;
    int pixelBytes = 4;
};

std::ostream& operator<<(std::ostream& out, const Geometry& geometry);

/// Sizes around vector lengths, padded and shifted, in no order.
const std::vector<Geometry>& awkwardGeometries();
/// These, every width up to some vectors, and long rows.
const std::vector<Geometry>& geometriesOfEveryWidth();

/// A frame whose every byte that is no pixel carries a pattern, before, behind and between the rows.
class TestFrame {
public:
    explicit TestFrame(const Geometry& geometry);
    /// Random pixels.
    TestFrame(const Geometry& geometry, Random& random);
    TestFrame(const Geometry& geometry, const Picture& picture);

    FrameBuffer* handle() { return &descriptor_; }
    const Geometry& geometry() const { return geometry_; }

    std::uint8_t* row(int row);
    void fillRandomly(Random& random);
    Picture picture() const;

    /// Fails when a byte outside the rows' pixels was written.
    testing::AssertionResult guardsHold() const;
    /// The same for the bytes before the first and behind the last row alone.
    testing::AssertionResult outerGuardsHold() const;

private:
    testing::AssertionResult guardsHold(std::size_t begin, std::size_t end) const;
    bool isPixelByte(std::size_t index) const;
    std::uint8_t guardByte(std::size_t index) const;

    Geometry geometry_;
    std::size_t stride_;
    std::vector<std::uint8_t> memory_;
    FrameBuffer descriptor_;
    std::uint8_t salt_;  ///< Of the pattern, which no other frame has at the same place.
};

/// Equal pictures, or a failure that names the first pixel that differs.
testing::AssertionResult samePicture(const Picture& expected, const Picture& actual);

#endif
