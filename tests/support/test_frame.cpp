// SPDX-License-Identifier: MIT
#include "tests/support/test_frame.h"

#include <cstring>
#include <iomanip>

namespace {

/// Bytes before the first and behind the last row. No multiple of a vector, so that rows are unaligned.
constexpr std::size_t margin = 4099;

std::uint8_t nextSalt() {
    static std::uint8_t salt = 0;
    return salt += 11;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Geometry& geometry) {
    out << geometry.width << " x " << geometry.height << " at (" << geometry.left << ", " << geometry.top
        << "), padding " << geometry.padding;
    if (geometry.negativeRowBytes) out << ", negative row bytes";
    if (geometry.pixelBytes != 4) out << ", " << geometry.pixelBytes << " bytes a pixel";
    return out;
}

const std::vector<Geometry>& awkwardGeometries() {
    static const std::vector<Geometry> geometries = [] {
        std::vector<Geometry> made;
        for (const int width : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 33, 63, 65, 100, 131, 258}) {
            for (const int height : {1, 2, 3, 4, 5, 8, 13, 40}) {
                const auto turn = static_cast<int>(made.size());
                made.push_back({.width = width, .height = height, .padding = turn % 4 * 4});
                if (turn % 3 == 1) made.back().left = -7, made.back().top = 12;
            }
        }
        return made;
    }();
    return geometries;
}

const std::vector<Geometry>& geometriesOfEveryWidth() {
    static const std::vector<Geometry> geometries = [] {
        std::vector<Geometry> made = awkwardGeometries();
        for (int width = 1; width < 200; ++width)
            made.push_back({.width = width, .height = 1 + width % 7, .padding = width % 3 * 4});
        for (const int width : {511, 512, 700, 2125}) made.push_back({.width = width, .height = 3});
        return made;
    }();
    return geometries;
}

Picture noise(int width, int height, Random& random) {
    Picture picture{width, height};
    for (std::uint32_t& pixel : picture.pixels) pixel = static_cast<std::uint32_t>(random());
    return picture;
}

TestFrame::TestFrame(const Geometry& geometry)
    : geometry_(geometry),
      stride_(static_cast<std::size_t>(geometry.width * geometry.pixelBytes + geometry.padding)),
      memory_(2 * margin + stride_ * static_cast<std::size_t>(geometry.height)),
      salt_(nextSalt()) {
    for (std::size_t i = 0; i < memory_.size(); ++i) memory_[i] = isPixelByte(i) ? 0 : guardByte(i);
    const auto rowBytes = static_cast<std::int32_t>(stride_);
    descriptor_ = {
        {geometry.left, geometry.top, geometry.left + geometry.width, geometry.top + geometry.height},
        geometry.negativeRowBytes ? -rowBytes : rowBytes,
        0,
        nullptr};
    descriptor_.pixels = row(0);
}

TestFrame::TestFrame(const Geometry& geometry, Random& random) : TestFrame(geometry) { fillRandomly(random); }

TestFrame::TestFrame(const Geometry& geometry, const Picture& picture) : TestFrame(geometry) {
    for (int y = 0; y < geometry.height; ++y) {
        for (int x = 0; x < geometry.width; ++x) {
            const std::uint32_t pixel = picture.at(x, y);
            std::memcpy(row(y) + 4 * x, &pixel, 4);
        }
    }
}

std::uint8_t* TestFrame::row(int row) {
    const int stored = geometry_.negativeRowBytes ? geometry_.height - 1 - row : row;
    return memory_.data() + margin + stride_ * static_cast<std::size_t>(stored);
}

void TestFrame::fillRandomly(Random& random) {
    for (int y = 0; y < geometry_.height; ++y) {
        std::uint8_t* bytes = row(y);
        for (int i = 0; i < geometry_.width * geometry_.pixelBytes; ++i) {
            bytes[i] = static_cast<std::uint8_t>(random());
        }
    }
}

Picture TestFrame::picture() const {
    Picture picture{geometry_.width, geometry_.height};
    for (int y = 0; y < geometry_.height; ++y) {
        for (int x = 0; x < geometry_.width; ++x) {
            std::memcpy(&picture.at(x, y), const_cast<TestFrame*>(this)->row(y) + 4 * x, 4);
        }
    }
    return picture;
}

std::uint8_t TestFrame::guardByte(std::size_t index) const {
    return static_cast<std::uint8_t>(index * 37 + salt_);
}

bool TestFrame::isPixelByte(std::size_t index) const {
    if (index < margin || index >= memory_.size() - margin || stride_ == 0) return false;
    return (index - margin) % stride_ < static_cast<std::size_t>(geometry_.width * geometry_.pixelBytes);
}

testing::AssertionResult TestFrame::guardsHold(std::size_t begin, std::size_t end) const {
    for (std::size_t i = begin; i < end; ++i) {
        if (isPixelByte(i) || memory_[i] == guardByte(i)) continue;
        return testing::AssertionFailure()
               << "byte " << static_cast<std::ptrdiff_t>(i) - static_cast<std::ptrdiff_t>(margin)
               << " from the rows' begin was written; frame " << geometry_;
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult TestFrame::guardsHold() const { return guardsHold(0, memory_.size()); }

testing::AssertionResult TestFrame::outerGuardsHold() const {
    const auto before = guardsHold(0, margin);
    return before ? guardsHold(memory_.size() - margin, memory_.size()) : before;
}

testing::AssertionResult samePicture(const Picture& expected, const Picture& actual) {
    if (expected.width != actual.width || expected.height != actual.height) {
        return testing::AssertionFailure() << "pictures of different size";
    }
    for (int y = 0; y < expected.height; ++y) {
        for (int x = 0; x < expected.width; ++x) {
            if (expected.at(x, y) == actual.at(x, y)) continue;
            return testing::AssertionFailure()
                   << "column " << x << ", row " << y << " of " << expected.width << " x " << expected.height
                   << std::hex << std::setfill('0') << ": expected " << std::setw(8) << expected.at(x, y)
                   << ", got " << std::setw(8) << actual.at(x, y);
        }
    }
    return testing::AssertionSuccess();
}
