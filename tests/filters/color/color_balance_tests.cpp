// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

#include <array>

namespace {

constexpr std::uint32_t colorBalanceId = 10013;

TEST(ColorBalance, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(colorBalanceId, [](FilterUnderTest& filter, Picture&, Random& random) {
        constexpr int factors[] = {0, 1, 127, 128, 254, 255, 256, 300, 509, 510, 511, 32768, 65535};
        const auto factor = [&] { return static_cast<std::uint16_t>(oneOf(factors, random)); };
        std::array<std::uint16_t, 3> redGreenBlue{255, 255, 255};
        if (random() % 8 != 0) {
            redGreenBlue = {factor(), factor(), factor()};
            filter.setRecord(redGreenBlue);
        }
        return [redGreenBlue](std::uint32_t pixel) {
            const auto balanced = [&](int channel) {
                return std::min(channelOf(pixel, channel) * redGreenBlue[2u - channel] / 255, 255);
            };
            return pixelOf(balanced(0), balanced(1), balanced(2), channelOf(pixel, 3));
        };
    });
}

TEST(ColorBalance, RemembersTheServicesOfTheFirstCall) {
    Random random(2);
    TestFrame source({.width = 8, .height = 2}, random);
    FilterUnderTest filter(colorBalanceId);
    filter.call(FilterSelectorInitSettings);
    filter.invocation.hostInstanceData = nullptr;
    filter.setSettings<std::uint16_t>({0, 0, 0});
    Picture black = source.picture();
    for (std::uint32_t& pixel : black.pixels) pixel &= 0xFF000000;
    EXPECT_TRUE(samePicture(black, filter.rendered(source)));
}

}  // namespace
