// SPDX-License-Identifier: MIT
#include "filters/lens/antialias_kernels.h"
#include "tests/filters/plain_filter.h"
#include "tests/support/instruction_sets.h"

#include <string_view>

namespace {

constexpr std::uint32_t antialiasId = 10002;

std::uint32_t average(std::uint32_t a, std::uint32_t b) {
    const std::uint32_t alpha = ((a >> 24) + (b >> 24)) >> 1;
    const std::uint32_t color = ((a & 0xFEFEFE) + (b & 0xFEFEFE)) >> 1;
    return alpha << 24 | color;
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

TEST(Antialias, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(antialiasId, [](FilterUnderTest&, Picture&, Random&) {
        return [](TestFrame& source) { return antialiased(source.picture()); };
    });
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
