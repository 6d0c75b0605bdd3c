// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

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

class HorizontalHoldTest : public testing::Test {
protected:
    Picture rendered(TestFrame& source, const Hold& hold) {
        filter.setSettings<std::int32_t>({hold.offset, hold.endStep});
        filter.invocation.frameTime = hold.time;
        filter.invocation.clipDuration = hold.duration;
        filter.invocation.fieldFlags = hold.multiplier == 2 ? 0x0200 : 0;
        return filter.rendered(source);
    }

    Random random{1};
    FilterUnderTest filter{horizontalHoldId};
};

TEST_F(HorizontalHoldTest, EqualsThePlainVersionOnAnyFrame) {
    constexpr std::int32_t steps[] = {0,      1,      -1,      40000,    onePixel,  -onePixel,  3 * onePixel,
                                      123456, -98765, 1 << 20, -1 << 20, 100 << 16, -(77 << 16)};
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        for (int i = 0; i < 6; ++i) {
            const auto anyStep = [&] { return steps[random() % std::size(steps)]; };
            const Hold hold{anyStep(), anyStep(), static_cast<std::uint32_t>(random() % 100),
                            static_cast<std::uint32_t>(random() % 100), 1 + i % 2};
            EXPECT_TRUE(samePicture(held(source.picture(), hold), rendered(source, hold)))
                << geometry << ", steps " << hold.offset << " to " << hold.endStep << " at " << hold.time
                << " of " << hold.duration << ", multiplier " << hold.multiplier;
        }
    }
}

TEST_F(HorizontalHoldTest, ShiftsRowKByKPixels) {
    const Geometry geometry{.width = 10, .height = 40};
    TestFrame source(geometry, random);
    const Picture result = rendered(source, {onePixel, onePixel, 5, 10, 1});
    for (int row = 0; row < 40; ++row) {
        // A shift of the whole row stands for itself before it is corrected.
        EXPECT_EQ(result.at(0, row), source.picture().at(row % 10, row)) << row;
        EXPECT_EQ(result.at(9, row), source.picture().at((row + 9) % 10, row)) << row;
    }
}

TEST_F(HorizontalHoldTest, MovesFromTheOffsetToTheEndStep) {
    TestFrame source({.width = 100, .height = 2}, random);
    const struct {
        std::uint32_t time, duration;
        int shift;
    } cases[] = {{0, 8, 2}, {4, 8, 6}, {8, 8, 10}, {16, 8, 18}, {3, 0, 2}};
    for (const auto& example : cases) {
        const Picture result =
            rendered(source, {2 * onePixel, 10 * onePixel, example.time, example.duration, 1});
        EXPECT_EQ(result.at(0, 0), source.picture().at(0, 0));
        EXPECT_EQ(result.at(0, 1), source.picture().at(example.shift, 1)) << example.time;
    }
}

TEST_F(HorizontalHoldTest, DoublesTheShiftInFramesOfHalfHeight) {
    TestFrame source({.width = 100, .height = 2}, random);
    filter.setSettings<std::int32_t>({3 * onePixel, 3 * onePixel});
    for (int bits = 0; bits < 0x10000; bits += 0x0080) {
        filter.invocation.fieldFlags = static_cast<std::uint16_t>(bits);
        const bool doubled = (bits & 0x0B00) != 0 && (bits & 0x0400) == 0;
        ASSERT_EQ(filter.rendered(source).at(0, 1), source.picture().at(doubled ? 6 : 3, 1)) << bits;
    }
}

TEST_F(HorizontalHoldTest, WrapsOffsetsOfSixteenBitsIntoTheRow) {
    TestFrame source({.width = 12000, .height = 12}, random);
    for (const int pixels : {8000, 8192, 9000, 11999, -1, -3000}) {
        const Hold hold{pixels * onePixel, pixels * onePixel, 0, 1, 1};
        EXPECT_TRUE(samePicture(held(source.picture(), hold), rendered(source, hold))) << pixels;
    }
}

TEST_F(HorizontalHoldTest, SurvivesAnySettings) {
    constexpr std::int32_t steps[] = {INT32_MIN, INT32_MIN + 1, -1, 0, 1, INT32_MAX};
    constexpr std::uint32_t times[] = {0, 1, 1000, 0x80000000, 0xFFFFFFFF};
    TestFrame source({.width = 7, .height = 20}, random);
    for (const std::int32_t offset : steps) {
        for (const std::int32_t endStep : steps) {
            for (const std::uint32_t time : times) {
                for (const std::uint32_t duration : times)
                    rendered(source, {offset, endStep, time, duration, 2});
            }
        }
    }
}

TEST_F(HorizontalHoldTest, WritesNothingOutsideTheDestinationAndReadsNothingOutsideTheSource) {
    filter.setSettings<std::int32_t>({100000, -50000});
    const Geometry sizes[] = {{.width = 20, .height = 10},
                              {.width = 7, .height = 30},
                              {.width = 40, .height = 3, .negativeRowBytes = true},
                              {.width = 0, .height = 5}};
    for (const Geometry& from : sizes) {
        for (const Geometry& to : sizes) {
            TestFrame source(from, random);
            TestFrame destination(to);
            filter.render(source, destination);
            EXPECT_TRUE(destination.guardsHold()) << from << " to " << to;
        }
    }
}

}  // namespace
