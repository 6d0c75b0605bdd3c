// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

#include <cmath>

namespace {

constexpr std::uint32_t horizontalHoldId = 10031;
constexpr int onePixel = 65536;

struct Hold {
    std::int32_t offset, endStep;
    std::uint32_t time, duration;
    int multiplier;
};

Picture held(const Picture& source, const Hold& hold) {
    Picture result{source.width, source.height};
    const double f = hold.duration == 0 ? 0 : static_cast<double>(hold.time) / hold.duration;
    const std::int64_t row = std::int64_t{source.width} << 16;
    std::int64_t sum = 0;
    std::int64_t byteOffset = 0;
    for (int y = 0; y < source.height; ++y) {
        std::int64_t from = byteOffset / 4;
        while (from < 0) from += source.width;
        for (int x = 0; x < source.width; ++x) {
            result.at(x, y) = source.at(static_cast<int>((from + x) % source.width), y);
        }
        sum += static_cast<std::int64_t>(std::trunc(f * (std::int64_t{hold.endStep} - hold.offset))) +
               hold.offset;
        if (sum < 0) sum += row;
        if (sum * hold.multiplier > row) sum -= row / hold.multiplier;
        byteOffset = (sum >> 16) * hold.multiplier * 4 % 65536;
        if (byteOffset >= 32768) byteOffset -= 65536;
        if (byteOffset < -32768) byteOffset += 65536;
    }
    return result;
}

TEST(HorizontalHold, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(horizontalHoldId, [](FilterUnderTest& filter, Picture&, Random& random) {
        constexpr std::int32_t steps[] = {
            0,      1,      -1,      40000,    onePixel,  -onePixel,  3 * onePixel,
            123456, -98765, 1 << 20, -1 << 20, 100 << 16, -(77 << 16)};
        const auto flags = static_cast<std::uint16_t>(random() % 3 == 0 ? 0 : random());
        const bool doubled = (flags & 0x0B00) != 0 && (flags & 0x0400) == 0;
        Hold hold{0, 0, static_cast<std::uint32_t>(random() % 100),
                  static_cast<std::uint32_t>(random() % 100), doubled ? 2 : 1};
        if (random() % 8 != 0) {
            hold.offset = oneOf(steps, random);
            hold.endStep = oneOf(steps, random);
            filter.setSettings<std::int32_t>({hold.offset, hold.endStep});
        }
        filter.invocation.frameTime = hold.time;
        filter.invocation.clipDuration = hold.duration;
        filter.invocation.fieldFlags = flags;
        return [hold](TestFrame& source) { return held(source.picture(), hold); };
    });
}

TEST(HorizontalHold, WrapsOffsetsOfSixteenBitsIntoTheRow) {
    Random random(1);
    TestFrame source({.width = 12000, .height = 12}, random);
    FilterUnderTest filter(horizontalHoldId);
    for (const int pixels : {8000, 8192, 9000, 11999, -1, -3000}) {
        filter.setSettings<std::int32_t>({pixels * onePixel, pixels * onePixel});
        const Hold hold{pixels * onePixel, pixels * onePixel, 0, 1, 1};
        EXPECT_TRUE(samePicture(held(source.picture(), hold), filter.rendered(source))) << pixels;
    }
}

}  // namespace
