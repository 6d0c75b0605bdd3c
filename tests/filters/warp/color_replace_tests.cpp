// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t colorReplaceId = 10016;

struct ReplaceSettings {
    int similarity = 10;
    bool solid = false;
    /// Stored with red in the low byte.
    std::uint32_t target = 0x000000FF;
    std::uint32_t replacement = 0x00FF0000;
};

std::uint32_t replaced(std::uint32_t pixel, const ReplaceSettings& settings) {
    int channels[3];
    for (int i = 0; i < 3; ++i) {
        if (std::abs(channelOf(pixel, i) - channelOf(settings.target, 2 - i)) > 2 * settings.similarity)
            return pixel;
        const int channel = channelOf(settings.replacement, 2 - i);
        channels[i] = settings.solid ? channel : channel * lumaOf(pixel) / 256;
    }
    return pixelOf(channels[0], channels[1], channels[2], channelOf(pixel, 3));
}

void store(FilterUnderTest& filter, const ReplaceSettings& settings) {
    auto bytes = littleEndian({static_cast<std::uint16_t>(settings.similarity)});
    bytes.push_back(settings.solid ? 1 : 0);
    for (const std::uint8_t byte : littleEndian({settings.target, settings.replacement}))
        bytes.push_back(byte);
    bytes.push_back(0);
    filter.setSettings(bytes);
}

TEST(ColorReplace, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(colorReplaceId, [](FilterUnderTest& filter, Picture& source, Random& random) {
        constexpr int similarities[] = {0, 1, 10, 40, 64, 127, 128, 65535};
        ReplaceSettings settings;
        if (random() % 8 != 0) {
            settings = {oneOf(similarities, random), random() % 2 == 0, static_cast<std::uint32_t>(random()),
                        static_cast<std::uint32_t>(random())};
            store(filter, settings);
        }
        for (std::uint32_t& pixel : source.pixels) {
            // About the border in each channel.
            const auto near = [&](int i) {
                const int apart = static_cast<int>(random() % 5) - 2 + 2 * settings.similarity;
                const int sign = static_cast<int>(random() % 3) - 1;
                return std::clamp(channelOf(settings.target, 2 - i) + sign * apart, 0, 255);
            };
            if (random() % 2 == 0) pixel = pixelOf(near(0), near(1), near(2), channelOf(pixel, 3));
        }
        return [settings](std::uint32_t pixel) { return replaced(pixel, settings); };
    });
}

TEST(ColorReplace, NarrowsTheGeometryToSixteenBits) {
    // A negative row step leaves every row but the first outside the frame; a width wraps to its low bits.
    const struct {
        int width, height, columns, rows;
    } cases[] = {{8191, 3, 8191, 3}, {8192, 3, 8192, 1}, {3, 65538, 3, 2}, {32768, 2, 0, 0}};
    for (const auto& example : cases) {
        Random random(21);
        TestFrame source({.width = example.width, .height = example.height}, random);
        TestFrame destination({.width = example.width, .height = example.height});
        FilterUnderTest(colorReplaceId).render(source, destination);
        const Picture original = source.picture();
        Picture expected{example.width, example.height};
        for (int y = 0; y < example.rows; ++y) {
            for (int x = 0; x < example.columns; ++x) expected.at(x, y) = replaced(original.at(x, y), {});
        }
        EXPECT_TRUE(samePicture(expected, destination.picture()));
        EXPECT_TRUE(destination.guardsHold());
    }
}

}  // namespace
