// SPDX-License-Identifier: MIT
#include "filters/lens/antialias_kernels.h"
#include "tests/filters/plain_filter.h"
#include "tests/support/instruction_sets.h"

namespace {

constexpr std::uint32_t antialiasId = 10002;

std::uint32_t average(std::uint32_t a, std::uint32_t b) {
    return ((a >> 24) + (b >> 24)) / 2 << 24 | ((a & 0xFEFEFE) + (b & 0xFEFEFE)) / 2;
}

Picture antialiased(const Picture& source) {
    Picture result = source;
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            std::uint32_t& pixel = result.at(x, y);
            // The first of several columns has no left neighbour, not even itself.
            if (x > 0 || source.width == 1) pixel = average(pixel, source.nearest(x - 1, y));
            pixel = average(pixel, source.nearest(x + 1, y));
            pixel = average(pixel, source.nearest(x, y - 1));
            pixel = average(pixel, source.nearest(x, y + 1));
        }
    }
    return result;
}

TEST(Antialias, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(antialiasId, [](FilterUnderTest&, Picture&, Random&) {
        return [](const TestFrame& source) { return antialiased(source.picture()); };
    });
}

TEST(Antialias, CountsSizesInSixteenBits) {
    Random random(2);
    TestFrame source({.width = 65536 + 5, .height = 4}, random);
    TestFrame destination({.width = 65536 + 5, .height = 4});
    FilterUnderTest(antialiasId).render(source, destination);
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
    FilterUnderTest(antialiasId).render(source, destination);
    Picture expected = antialiased(source.picture());
    expected.pixels.resize(12 * 5);
    expected.height = 5;
    EXPECT_TRUE(samePicture(expected, destination.picture()));
}

TEST(AntialiasKernels, EverySetOverwritesARowAlike) {
    Random random(5);
    for (const int ahead : {-2, -1, 0, 1, 2}) {
        constexpr int width = 70;
        const Picture source = noise(width + 8, 3, random);
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
