// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_BRIDGES_OPENFX_HOST_TEST_IMAGE_H
#define VIREO_TESTS_BRIDGES_OPENFX_HOST_TEST_IMAGE_H

#include "tests/bridges/openfx/host/property_set.h"

#include <vireo/vireo.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace openfx::test {

/// How an image lies in the host's memory.
struct Lie {
    VireoDepth depth = VireoDepth8;
    bool hasAlpha = true;
    bool premultiplied = false;
    bool isTopDown = false;  ///< Rows in memory from the top, so with negative row bytes.
    int x = 0, y = 0;        ///< Where the picture begins.
    int gap = 0;             ///< Pixels between the rows.
    int margin = 0;          ///< Pixels around the picture that belong to the bounds.
};

/// A picture without any of that: rows from the top, samples as they are in its depth.
struct Plain {
    int width = 0, height = 0;
    VireoDepth depth = VireoDepth8;
    bool hasAlpha = true;
    std::vector<std::uint8_t> bytes;

    Plain() = default;
    Plain(int width, int height, VireoDepth depth, bool hasAlpha);

    VireoFrame frame(bool premultiplied = false);
    std::size_t pixelBytes() const { return static_cast<std::size_t>(depth / 8 * (hasAlpha ? 4 : 3)); }
    std::size_t rowBytes() const { return pixelBytes() * static_cast<std::size_t>(width); }
    std::uint8_t* row(int y) { return bytes.data() + static_cast<std::size_t>(y) * rowBytes(); }
    const std::uint8_t* row(int y) const { return bytes.data() + static_cast<std::size_t>(y) * rowBytes(); }

    bool operator==(const Plain&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Plain& picture);

/// Random samples; `opaque` has full alpha.
Plain noise(int width, int height, std::uint32_t seed, VireoDepth depth = VireoDepth8, bool hasAlpha = true);

/// An image of the host's, guarded all around.
class TestImage {
public:
    TestImage(const Plain& picture, const Lie& lie);
    TestImage(const TestImage&) = delete;
    TestImage& operator=(const TestImage&) = delete;

    PropertySet properties{"image"};

    OfxRectI area() const;    ///< Of the picture.
    OfxRectI bounds() const;  ///< With its margin.

    /// The picture as it is now.
    Plain picture() const;

    /// Whether nothing changed outside an area.
    bool holdsOutside(const OfxRectI& area) const;

private:
    std::uint8_t* at(int x, int y);
    const std::uint8_t* at(int x, int y) const { return const_cast<TestImage*>(this)->at(x, y); }
    std::ptrdiff_t rowBytes() const;

    Plain shape_;
    Lie lie_;
    std::vector<std::uint8_t> memory_, before_;
};

}  // namespace openfx::test

#endif
