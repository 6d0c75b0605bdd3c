// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t colorPassId = 10015;

struct Selection {
    int similarity = 10;
    bool reverse = false;
    std::uint32_t color = 0xFF0000;
};

void store(FilterUnderTest& filter, const Selection& s) {
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    filter.setSettings<std::uint8_t>({byte(s.similarity), byte(s.similarity >> 8), byte(s.reverse ? 0x80 : 0),
                                      byte(channelOf(s.color, 2)), byte(channelOf(s.color, 1)),
                                      byte(channelOf(s.color, 0)), 0xAA});
}

TEST(ColorPass, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(colorPassId, [](FilterUnderTest& filter, Picture& source, Random& random) {
        constexpr int similarities[] = {0, 1, 5, 10, 63, 127, 128, 32767, 32768, 65535};
        Selection s;
        if (random() % 8 != 0) {
            s = {oneOf(similarities, random), random() % 2 == 0, static_cast<std::uint32_t>(random())};
            store(filter, s);
        }
        // Colours around the chosen one, so that both sides of the tolerance occur.
        const int spread = std::min(3 * s.similarity, 255) + 1;
        for (std::uint32_t& pixel : source.pixels) {
            const auto near = [&](int channel) {
                const int apart = static_cast<int>(random() % (2u * spread + 1)) - spread;
                return std::clamp(channelOf(s.color, channel) + apart, 0, 255);
            };
            pixel = pixelOf(near(0), near(1), near(2), channelOf(pixel, 3));
        }
        return [s](std::uint32_t pixel) {
            int distance = 0;
            for (int i = 0; i < 3; ++i)
                distance = std::max(distance, std::abs(channelOf(pixel, i) - channelOf(s.color, i)));
            const bool far = distance > 2 * s.similarity;
            const int luma = lumaOf(pixel);
            return far == s.reverse ? pixel : pixelOf(luma, luma, luma, channelOf(pixel, 3));
        };
    });
}

}  // namespace
