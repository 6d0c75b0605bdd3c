// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t solarizeId = 10049;

std::uint32_t solarized(std::uint32_t pixel, int threshold) {
    const auto share = [&](int channel, int perMille) { return channelOf(pixel, channel) * perMille / 1000; };
    // Weights of red and blue are exchanged.
    if (share(0, 299) + share(1, 587) + share(2, 114) >= threshold) return pixel;
    int channels[3];
    for (int i = 0; i < 3; ++i) {
        const int channel = channelOf(pixel, i);
        channels[i] = channel < threshold ? (threshold - channel) % 256 : 0;
    }
    return pixelOf(channels[0], channels[1], channels[2], channelOf(pixel, 3));
}

TEST(Solarize, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(solarizeId, [](FilterUnderTest& filter, Picture&, Random& random) {
        constexpr int thresholds[] = {-32768, -1, 0, 1, 10, 77, 128, 254, 255, 256, 300, 511, 512, 32767};
        const bool isSet = random() % 8 != 0;
        const int threshold = isSet ? oneOf(thresholds, random) : 10;
        if (isSet) filter.setSettings({static_cast<std::int16_t>(threshold)});
        return [threshold](std::uint32_t pixel) { return solarized(pixel, threshold); };
    });
}

TEST(Solarize, WalksWithTheSourcesRowBytesRoundedToPixels) {
    Random random(4);
    const Geometry geometry{.width = 5, .height = 3, .padding = 7};
    TestFrame source(geometry, random), destination(geometry);
    FilterUnderTest filter(solarizeId);
    filter.setSettings<std::int16_t>({0});
    filter.render(source, destination);
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(std::memcmp(destination.row(0) + 24 * y, source.row(0) + 24 * y, 20), 0);
    }
}

}  // namespace
