// SPDX-License-Identifier: MIT
#include "filters/basic/solarize_kernels.h"
#include "tests/support/filter_under_test.h"

#include <cmath>

namespace {

constexpr std::uint32_t solarizeId = 10049;

int share(int channel, int perMille) { return channel * perMille / 1000; }

std::uint32_t solarized(std::uint32_t pixel, int threshold) {
    const int luma =
        share(channelOf(pixel, 0), 299) + share(channelOf(pixel, 1), 587) + share(channelOf(pixel, 2), 114);
    if (luma >= threshold) return pixel;
    int channels[3];
    for (int i = 0; i < 3; ++i) {
        const int channel = channelOf(pixel, i);
        channels[i] = channel < threshold ? (threshold - channel) % 256 : 0;
    }
    return pixelOf(channels[0], channels[1], channels[2], channelOf(pixel, 3));
}

Picture solarized(Picture picture, int threshold) {
    for (std::uint32_t& pixel : picture.pixels) pixel = solarized(pixel, threshold);
    return picture;
}

constexpr int thresholds[] = {-32768, -1, 0, 1, 10, 77, 128, 254, 255, 256, 300, 511, 512, 32767};

TEST(Solarize, WorkedPixels) {
    const struct {
        std::uint32_t pixel;
        int threshold;
        std::uint32_t result;
    } cases[] = {
        {0x80050505, 10, 0x80050505},   // Each channel 10 - 5.
        {0x80030B03, 10, 0x80070007},   // A channel above the threshold goes to 0.
        {0xFFFFFFFF, 128, 0xFFFFFFFF},  // Bright: unchanged.
        {0x000000FF, 77, 0x004D4D00},   // Blue weighs 76.
        {0x00FF0000, 30, 0x00001E1E},   // Red weighs 29.
        {0x00FF0000, 29, 0x00FF0000},
    };
    for (const auto& example : cases) {
        FilterUnderTest filter(solarizeId);
        filter.setSettings<std::int16_t>({static_cast<std::int16_t>(example.threshold)});
        TestFrame source({.width = 1, .height = 1}, Picture{1, 1, {example.pixel}});
        EXPECT_EQ(filter.rendered(source).at(0, 0), example.result) << std::hex << example.pixel;
    }
}

TEST(Solarize, EqualsThePlainVersionOnAnyFrame) {
    Random random(2);
    FilterUnderTest filter(solarizeId);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        const int threshold = thresholds[random() % std::size(thresholds)];
        filter.setSettings<std::int16_t>({static_cast<std::int16_t>(threshold)});
        EXPECT_TRUE(samePicture(solarized(source.picture(), threshold), filter.rendered(source)))
            << geometry << ", threshold " << threshold;
    }
}

TEST(Solarize, RendersWithTenWhereNoSettingsExist) {
    Random random(3);
    TestFrame source({.width = 64, .height = 3}, random);
    FilterUnderTest filter(solarizeId);
    EXPECT_TRUE(samePicture(solarized(source.picture(), 10), filter.rendered(source)));
}

TEST(Solarize, WalksWithTheSourcesRowBytesRoundedToPixels) {
    Random random(4);
    TestFrame source({.width = 5, .height = 3, .padding = 7}, random);
    TestFrame destination({.width = 5, .height = 3, .padding = 7});
    FilterUnderTest filter(solarizeId);
    filter.setSettings<std::int16_t>({0});
    filter.render(source, destination);
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(std::memcmp(destination.row(0) + 24 * y, source.row(0) + 24 * y, 20), 0);
    }
}

TEST(Solarize, WritesNothingOutsideTheDestination) {
    Random random(5);
    TestFrame source({.width = 40, .height = 30}, random);
    FilterUnderTest filter(solarizeId);
    for (const Geometry& geometry : {Geometry{.width = 7, .height = 3}, Geometry{.width = 0, .height = 30},
                                     Geometry{.width = 40, .height = 30, .negativeRowBytes = true}}) {
        TestFrame destination(geometry);
        filter.render(source, destination);
        EXPECT_TRUE(destination.outerGuardsHold());
    }
    TestFrame destination({.width = 40, .height = 30});
    for (const std::int32_t rowBytes : {0, 3, -160, 1 << 30, INT32_MIN, INT32_MAX}) {
        source.handle()->rowBytes = rowBytes;
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold()) << rowBytes;
    }
    source.handle()->bounds = {10, 10, -10, -10};
    filter.render(source, destination);
    EXPECT_TRUE(destination.guardsHold());
}

TEST(SolarizeKernels, EverySetEqualsThePlainVersion) {
    Random random(6);
    for (const auto set : runnableInstructionSets()) {
        for (int width = 0; width < 200; ++width) {
            std::vector<std::uint8_t> from(4 * width + 64), to(4 * width + 64, 0x5A);
            for (auto& byte : from) byte = static_cast<std::uint8_t>(random());
            const int threshold = thresholds[random() % std::size(thresholds)];
            const std::size_t offset = random() % 16;
            solarizeKernelsTables.at(set).row(from.data() + offset, to.data() + 3 + offset, width, threshold);
            auto expected = std::vector<std::uint8_t>(to.size(), 0x5A);
            for (int x = 0; x < width; ++x) {
                std::uint32_t pixel;
                std::memcpy(&pixel, from.data() + offset + 4 * x, 4);
                pixel = solarized(pixel, threshold);
                std::memcpy(expected.data() + 3 + offset + 4 * x, &pixel, 4);
            }
            ASSERT_EQ(to, expected) << instructionSetName(set) << ", width " << width << ", threshold "
                                    << threshold;
        }
    }
}

}  // namespace
