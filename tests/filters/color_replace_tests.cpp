// SPDX-License-Identifier: MIT
#include "filters/warp/color_replace_kernels.h"
#include "tests/filters/support/kernel_rows.h"

#include <algorithm>

namespace {

constexpr std::uint32_t colorReplaceId = 10016;

struct Settings {
    int similarity = 10;
    bool solid = false;
    std::uint32_t target = 0x000000FF;
    std::uint32_t replacement = 0x00FF0000;
};

/// Colours are stored with red in the low byte.
int storedChannel(std::uint32_t color, int channel) { return channelOf(color, 2 - channel); }

std::uint32_t replaced(std::uint32_t pixel, const Settings& settings) {
    int distance = 0;
    for (int i = 0; i < 3; ++i) {
        distance = std::max(distance, std::abs(channelOf(pixel, i) - storedChannel(settings.target, i)));
    }
    if (distance > 2 * settings.similarity) return pixel;
    const int luma = channelOf(pixel, 2) * 299 / 1000 + channelOf(pixel, 1) * 587 / 1000 +
                     channelOf(pixel, 0) * 114 / 1000;
    int channels[3];
    for (int i = 0; i < 3; ++i) {
        const int channel = storedChannel(settings.replacement, i);
        channels[i] = settings.solid ? channel : channel * luma / 256;
    }
    return pixelOf(channels[0], channels[1], channels[2], channelOf(pixel, 3));
}

Picture replaced(Picture picture, const Settings& settings) {
    for (std::uint32_t& pixel : picture.pixels) pixel = replaced(pixel, settings);
    return picture;
}

void store(FilterUnderTest& filter, const Settings& settings) {
    std::vector<std::uint8_t> bytes =
        littleEndian<std::uint16_t>({static_cast<std::uint16_t>(settings.similarity)});
    bytes.push_back(settings.solid ? 1 : 0);
    for (const std::uint8_t byte : littleEndian({settings.target, settings.replacement}))
        bytes.push_back(byte);
    bytes.push_back(0);
    filter.setSettings(bytes);
}

Settings randomSettings(Random& random) {
    constexpr int similarities[] = {0, 1, 10, 40, 64, 127, 128, 65535};
    return {similarities[random() % std::size(similarities)], random() % 2 == 0,
            static_cast<std::uint32_t>(random()), static_cast<std::uint32_t>(random())};
}

TEST(ColorReplace, WorkedPixels) {
    const struct {
        std::uint32_t pixel;
        Settings settings;
        std::uint32_t result;
    } cases[] = {
        {0x40FF0000, {}, 0x4000004B},  // Red of luma 76: 255 * 76 / 256 of blue.
        {0x40FF0000, {.solid = true}, 0x400000FF},
        {0x40EB1414, {.solid = true}, 0x400000FF},  // 20 away in each channel.
        {0x40EA0000, {.solid = true}, 0x40EA0000},  // 21 away in one.
        {0x40FF0001, {.similarity = 0, .solid = true}, 0x40FF0001},
        {0x11FFFFFF, {.target = 0x00FFFFFF, .replacement = 0x00FFFFFF}, 0x11FDFDFD},
        {0x11000000, {.target = 0, .replacement = 0x00FFFFFF}, 0x11000000},
        {0x11000000, {.similarity = 127, .target = 0x000000FE}, 0x11000000},
        {0x11000000, {.similarity = 127, .solid = true}, 0x11000000},  // 255 away in red.
    };
    for (const auto& example : cases) {
        FilterUnderTest filter(colorReplaceId);
        store(filter, example.settings);
        TestFrame source({.width = 1, .height = 1}, Picture{1, 1, {example.pixel}});
        EXPECT_EQ(filter.rendered(source).at(0, 0), example.result) << std::hex << example.pixel;
    }
}

TEST(ColorReplace, EqualsThePlainVersionOnAnyFrame) {
    Random random(20);
    FilterUnderTest filter(colorReplaceId);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        Settings settings;
        filter.dropSettings();
        EXPECT_TRUE(samePicture(replaced(source.picture(), settings), filter.rendered(source))) << geometry;
        settings = randomSettings(random);
        store(filter, settings);
        EXPECT_TRUE(samePicture(replaced(source.picture(), settings), filter.rendered(source))) << geometry;
    }
}

TEST(ColorReplace, NarrowsTheGeometryToSixteenBits) {
    // A negative row step leaves every row but the first outside the frame; a width wraps to its low bits.
    const struct {
        int width, height, padding, columns, rows;
    } cases[] = {{8191, 3, 0, 8191, 3}, {8192, 3, 0, 8192, 1}, {3, 65538, 0, 3, 2}, {32768, 2, 0, 0, 0}};
    for (const auto& example : cases) {
        Random random(21);
        TestFrame source({.width = example.width, .height = example.height}, random);
        TestFrame destination({.width = example.width, .height = example.height});
        FilterUnderTest filter(colorReplaceId);
        filter.render(source, destination);
        Picture expected = replaced(source.picture(), {});
        for (int y = 0; y < example.height; ++y) {
            for (int x = 0; x < example.width; ++x) {
                if (x >= example.columns || y >= example.rows) expected.at(x, y) = 0;
            }
        }
        EXPECT_TRUE(samePicture(expected, destination.picture()));
        EXPECT_TRUE(destination.guardsHold());
    }
}

TEST(ColorReplace, WritesNothingOutsideTheDestination) {
    Random random(22);
    TestFrame source({.width = 40, .height = 30}, random);
    TestFrame destination({.width = 7, .height = 3});
    FilterUnderTest filter(colorReplaceId);
    filter.render(source, destination);
    EXPECT_TRUE(destination.outerGuardsHold());
    for (const std::int32_t rowBytes : {0, -160, 65536 + 160, INT32_MIN, INT32_MAX}) {
        source.handle()->rowBytes = rowBytes;
        filter.render(source, destination);
        EXPECT_TRUE(destination.outerGuardsHold()) << rowBytes;
    }
}

TEST(ColorReplaceKernels, EverySetEqualsThePlainVersion) {
    Random random(23);
    for (int turn = 0; turn < 12; ++turn) {
        Settings settings = randomSettings(random);
        settings.similarity = std::min(settings.similarity, 127);
        const auto inPixelOrder = [](std::uint32_t color) {
            return pixelOf(storedChannel(color, 0), storedChannel(color, 1), storedChannel(color, 2), 0);
        };
        const ColorSwap swap{inPixelOrder(settings.target), inPixelOrder(settings.replacement),
                             static_cast<std::uint8_t>(2 * settings.similarity)};
        expectRowsEqualPlain(
            random,
            [&](auto set, auto... row) {
                const ColorReplaceKernels& kernels = colorReplaceKernelsTables.at(set);
                (settings.solid ? kernels.solid : kernels.shaded)(row..., swap);
            },
            [&](std::uint32_t pixel) { return replaced(pixel, settings); });
    }
}

}  // namespace
