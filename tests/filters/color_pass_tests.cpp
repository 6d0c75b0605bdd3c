// SPDX-License-Identifier: MIT
#include "filters/color/color_pass_kernels.h"
#include "tests/support/filter_under_test.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr std::uint32_t colorPassId = 10015;

struct Selection {
    int similarity;
    bool reverse;
    int red, green, blue;
};

std::vector<std::uint8_t> record(const Selection& s) {
    return {static_cast<std::uint8_t>(s.similarity),
            static_cast<std::uint8_t>(s.similarity >> 8),
            static_cast<std::uint8_t>(s.reverse ? 0x80 : 0),
            static_cast<std::uint8_t>(s.red),
            static_cast<std::uint8_t>(s.green),
            static_cast<std::uint8_t>(s.blue),
            0xAA};
}

std::uint32_t passed(std::uint32_t pixel, const Selection& s) {
    const int blue = channelOf(pixel, 0), green = channelOf(pixel, 1), red = channelOf(pixel, 2);
    const int distance =
        std::max({std::abs(blue - s.blue), std::abs(green - s.green), std::abs(red - s.red)});
    const bool far = distance > 2 * s.similarity;
    if (far == s.reverse) return pixel;
    const int luma = red * 299 / 1000 + green * 587 / 1000 + blue * 114 / 1000;
    return pixelOf(luma, luma, luma, channelOf(pixel, 3));
}

/// Colours around the chosen one, so that both sides of the tolerance occur.
Selection scatterAround(Random& random, Picture& picture) {
    constexpr int similarities[] = {0, 1, 5, 10, 63, 127, 128, 32767, 32768, 65535};
    const Selection selection{similarities[random() % std::size(similarities)], random() % 2 == 0,
                              static_cast<int>(random() % 256), static_cast<int>(random() % 256),
                              static_cast<int>(random() % 256)};
    const int spread = std::min(3 * selection.similarity, 255) + 1;
    const auto near = [&](int channel) {
        return std::clamp(channel + static_cast<int>(random() % (2 * spread + 1)) - spread, 0, 255);
    };
    for (std::uint32_t& pixel : picture.pixels) {
        pixel = pixelOf(near(selection.blue), near(selection.green), near(selection.red),
                        static_cast<int>(random() % 256));
    }
    return selection;
}

Picture passed(Picture picture, const Selection& selection) {
    for (std::uint32_t& pixel : picture.pixels) pixel = passed(pixel, selection);
    return picture;
}

TEST(ColorPass, EqualsThePlainVersionOnAnyFrame) {
    Random random(1);
    FilterUnderTest filter(colorPassId);
    for (const Geometry& geometry : awkwardGeometries()) {
        Picture picture{geometry.width, geometry.height};
        const Selection selection = scatterAround(random, picture);
        TestFrame source(geometry, picture);
        filter.setSettings(record(selection));
        EXPECT_TRUE(samePicture(passed(picture, selection), filter.rendered(source)))
            << geometry << ", similarity " << selection.similarity;
    }
}

TEST(ColorPass, PassesRedWithoutSettings) {
    const Picture picture{6, 1, {0x55FF0000, 0x55EB1414, 0x55EA0000, 0x55FF1500, 0x55FF0015, 0xFFFFFFFF}};
    TestFrame source({.width = 6, .height = 1}, picture);
    FilterUnderTest filter(colorPassId);
    EXPECT_TRUE(
        samePicture(Picture{6, 1, {0x55FF0000, 0x55EB1414, 0x55454545, 0x55585858, 0x554E4E4E, 0xFFFEFEFE}},
                    filter.rendered(source)));
}

TEST(ColorPass, BothWaysTurnComplementaryPixelsToGrey) {
    Picture picture{200, 40};
    Random random(2);
    Selection selection = scatterAround(random, picture);
    TestFrame source({.width = 200, .height = 40}, picture);
    FilterUnderTest filter(colorPassId);
    selection.reverse = false;
    filter.setSettings(record(selection));
    const Picture normal = filter.rendered(source);
    selection.reverse = true;
    filter.setSettings(record(selection));
    const Picture reverse = filter.rendered(source);
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        EXPECT_TRUE(normal.pixels[i] == picture.pixels[i] || reverse.pixels[i] == picture.pixels[i]);
    }
}

TEST(ColorPass, WritesNothingOutsideTheDestination) {
    Random random(3);
    FilterUnderTest filter(colorPassId);
    TestFrame source({.width = 20, .height = 10, .padding = 3}, random);
    for (const Geometry& geometry :
         {Geometry{.width = 7, .height = 3}, Geometry{.width = 20, .height = 10, .negativeRowBytes = true},
          Geometry{.width = 0, .height = 10}, Geometry{.width = 20, .height = 4}}) {
        TestFrame destination(geometry);
        filter.render(source, destination);
        EXPECT_TRUE(destination.outerGuardsHold()) << geometry;
    }
}

TEST(ColorPassKernels, EverySetEqualsThePlainVersion) {
    Random random(4);
    for (const auto set : runnableInstructionSets()) {
        for (int width = 0; width < 150; ++width) {
            Picture picture{width, 1};
            const Selection s = scatterAround(random, picture);
            TestFrame source({.width = width, .height = 1}, picture);
            TestFrame destination({.width = width, .height = 1, .padding = 1});
            const auto lowest = [&](int c) { return std::max(c - 2 * s.similarity, 0); };
            const auto highest = [&](int c) { return std::min(c + 2 * s.similarity, 255); };
            const ColorPassSelection selection{
                pixelOf(lowest(s.blue), lowest(s.green), lowest(s.red), 0),
                pixelOf(highest(s.blue), highest(s.green), highest(s.red), 255), s.reverse};
            colorPassKernelsTables.at(set).row(source.row(0), destination.row(0), width, selection);
            ASSERT_TRUE(samePicture(passed(picture, s), destination.picture())) << instructionSetName(set);
            ASSERT_TRUE(destination.guardsHold());
        }
    }
}

}  // namespace
