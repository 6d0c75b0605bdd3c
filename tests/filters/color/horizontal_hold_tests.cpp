// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t horizontalHoldId = 10031;

/// Each row turns by so many pixels more than the one before, as far as sixteen bits hold the bytes.
Picture held(const Picture& source, int pixels) {
    const int width = source.width;
    Picture result{width, source.height};
    int turned = 0;
    for (int y = 0; y < source.height; ++y) {
        const int from = static_cast<std::int16_t>(4 * turned) / 4 + width;
        for (int x = 0; x < width; ++x) result.at(x, y) = source.at((from + x) % width, y);
        turned += pixels;
        if (turned < 0) turned += width;
        if (turned > width) turned -= width;
    }
    return result;
}

TEST(HorizontalHold, WrapsOffsetsOfSixteenBitsIntoTheRow) {
    Random random(1);
    TestFrame source({.width = 12000, .height = 12}, random);
    FilterUnderTest filter(horizontalHoldId);
    for (const int pixels : {8000, 8192, 9000, 11999, -1, -3000}) {
        filter.setSettings({pixels * 65536, pixels * 65536});
        EXPECT_TRUE(samePicture(held(source.picture(), pixels), filter.rendered(source))) << pixels;
    }
}

}  // namespace
