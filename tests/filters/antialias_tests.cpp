// SPDX-License-Identifier: MIT
#include "filters/lens/antialias_kernels.h"
#include "tests/support/filter_under_test.h"

#include <string_view>

namespace {

constexpr std::uint32_t antialiasId = 10002;

std::uint32_t average(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t alpha = ((a >> 24) + (b >> 24)) >> 1;
    const std::uint32_t colour = ((a & 0xFEFEFE) + (b & 0xFEFEFE)) >> 1;
    return alpha << 24 | colour;
}

/// The neighbours in the order in which they are averaged, by row (first, interior, last) and column.
constexpr std::string_view chains[3][3] = {
    {"CRCD", "LCRCD", "LCCCD"},
    {"CRUD", "LCRUD", "LCCUD"},
    {"CRUC", "LCRUC", "LCCUC"},
};

int placeOf(int index, int size) { return index == 0 ? 0 : index == size - 1 ? 2 : 1; }

Picture antialiased(const Picture& source) {
    Picture result{source.width, source.height};
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            const std::string_view chain =
                source.width == 1 ? "CCCUD" : chains[placeOf(y, source.height)][placeOf(x, source.width)];
            const auto neighbour = [&](char name) {
                switch (name) {
                    case 'L': return source.at(x - 1, y);
                    case 'R': return source.at(x + 1, y);
                    case 'U': return source.at(x, y == 0 ? y : y - 1);
                    case 'D': return source.at(x, y == source.height - 1 ? y : y + 1);
                    default: return source.at(x, y);
                }
            };
            std::uint32_t pixel = neighbour(chain[0]);
            for (const char name : chain.substr(1)) pixel = average(pixel, neighbour(name));
            result.at(x, y) = pixel;
        }
    }
    return result;
}

TEST(Antialias, WorkedPixels) {
    // Weights 1/8, 1/8, 1/4, 1/2 in the first column and 1/16, 1/16, 1/8, 1/4, 1/2 inside.
    const Picture source{3, 3, {16, 32, 64, 0x01000010, 0x05000021, 0x0B000040, 16, 128, 3}};
    TestFrame frame({.width = 3, .height = 3}, source);
    FilterUnderTest filter(antialiasId);
    const Picture result = filter.rendered(frame);
    EXPECT_EQ(result.at(0, 0), (((16u + 32) / 2 + 16) / 2 + 16) / 2);
    EXPECT_EQ(result.at(1, 1), ((3u + 11) / 2 + 0) / 2 / 2 << 24 | (((0x18u + 0x40) / 2 + 32) / 2 + 128) / 2);
}

TEST(Antialias, EqualsThePlainVersionOnAnyFrame) {
    Random random(1);
    FilterUnderTest filter(antialiasId);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        EXPECT_TRUE(samePicture(antialiased(source.picture()), filter.rendered(source))) << geometry;
    }
}

TEST(Antialias, CountsSizesInSixteenBits) {
    Random random(2);
    TestFrame source({.width = 65536 + 5, .height = 4}, random);
    TestFrame destination({.width = 65536 + 5, .height = 4});
    FilterUnderTest filter(antialiasId);
    filter.render(source, destination);
    // Five columns of four rows, five pixels apart.
    const Picture narrow = antialiased({5, 4, source.picture().pixels});
    Picture expected{65536 + 5, 4};
    std::copy_n(narrow.pixels.begin(), 20, expected.pixels.begin());
    EXPECT_TRUE(samePicture(expected, destination.picture()));
}

TEST(Antialias, SmallerSourceStandsForItsOwnMissingNeighbours) {
    Random random(3);
    TestFrame source({.width = 12, .height = 3}, random);
    TestFrame destination({.width = 12, .height = 5});
    FilterUnderTest filter(antialiasId);
    filter.render(source, destination);
    Picture expected = antialiased(source.picture());
    expected.pixels.resize(12 * 5);
    expected.height = 5;
    EXPECT_TRUE(samePicture(expected, destination.picture()));

    TestFrame wide({.width = 20, .height = 5}, random);
    source.handle()->rowBytes = wide.handle()->rowBytes;  // The last row ends early.
    source.handle()->bounds.bottom = 2;
    filter.render(source, wide);
    EXPECT_TRUE(wide.guardsHold());
}

TEST(AntialiasKernels, EverySetEqualsThePlainVersion) {
    Random random(4);
    for (const auto set : runnableInstructionSets()) {
        for (int width = 0; width < 140; ++width) {
            Picture source{width + 2, 3};
            for (std::uint32_t& pixel : source.pixels) pixel = static_cast<std::uint32_t>(random());
            const auto row = [&](int y) {
                return reinterpret_cast<const std::uint8_t*>(source.pixels.data() + y * (width + 2) + 1);
            };
            std::vector<std::uint32_t> result(static_cast<std::size_t>(width) + 1, 0x5A5A5A5A);
            antialiasKernelsTables.at(set).row(row(0), row(1), row(2),
                                               reinterpret_cast<std::uint8_t*>(result.data()), width);
            const Picture expected = antialiased(source);
            for (int x = 0; x < width; ++x) ASSERT_EQ(result[x], expected.at(x + 1, 1)) << width << ' ' << x;
            ASSERT_EQ(result.back(), 0x5A5A5A5A);
        }
    }
}

TEST(AntialiasKernels, EverySetOverwritesARowAlike) {
    Random random(5);
    for (const int ahead : {-2, -1, 0, 1, 2}) {
        constexpr int width = 70;
        Picture source{width + 8, 3};
        for (std::uint32_t& pixel : source.pixels) pixel = static_cast<std::uint32_t>(random());
        const auto overwritten = [&](simd::InstructionSet set) {
            Picture picture = source;
            const auto row = [&](int y) {
                return reinterpret_cast<std::uint8_t*>(picture.pixels.data() + y * (width + 8) + 4);
            };
            antialiasKernelsTables.at(set).row(row(0), row(1), row(2), row(1) + 4 * ahead, width);
            return picture.pixels;
        };
        for (const auto set : runnableInstructionSets()) {
            EXPECT_EQ(overwritten(set), overwritten(simd::InstructionSet::Baseline)) << ahead;
        }
    }
}

}  // namespace
