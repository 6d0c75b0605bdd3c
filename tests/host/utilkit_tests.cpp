// SPDX-License-Identifier: MIT
#include "host/heapkit/heapkit.h"
#include "host/utilkit/utilkit.h"
#include "tests/host/test_buffer.h"
#include "tests/host/workers.h"
#include "tests/support/test_frame.h"

namespace {

TEST(FixedPoint, TruncatesTowardZeroAndSaturates) {
    struct Case {
        std::int32_t a, b, product, quotient;
    };
    const Case cases[] = {
        {0x10000, 0x10000, 0x10000, 0x10000},
        {-3, 0x8000, -1, -6},
        {maximum, maximum, maximum, 0x10000},
        {minimum, maximum, -maximum, -0x10000},
        {minimum, minimum, maximum, 0x10000},
        {minimum, 0x10000, minimum, minimum},
        {minimum, -0x10000, maximum, maximum},
        {maximum, 1, 0x7FFF, maximum},
        {-maximum, 1, -0x7FFF, -maximum},
        {maximum, -1, -0x7FFF, -maximum},
        {7, 0, 0, maximum},
        {-7, 0, 0, -maximum},
        {0, minimum, 0, 0},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(FixedMul(each.a, each.b), each.product) << each.a << " * " << each.b;
        EXPECT_EQ(FixedDiv(each.a, each.b), each.quotient) << each.a << " / " << each.b;
    }
}

TEST(BlockMove, TakesBlocksThatOverlapBothWays) {
    char text[] = "abcdefgh";
    VrBlockMove(text, text + 2, 5);
    EXPECT_STREQ(text, "ababcdeh");
    VrBlockMove(text + 2, text, 5);
    EXPECT_STREQ(text, "abcdedeh");
}

TEST(SmoothAlpha, WeighsNeighboursAndLeavesTheRestAlone) {
    Random random(1);
    for (int round = 0; round < 430; ++round) {
        // The last ones are high enough to be shared.
        const int height = round < 400 ? 1 + round / 60 : 63 + 7 * (round - 400);
        const Geometry geometry{1 + round % 70, height, 4 * (round % 3), 0, 0, round % 2 == 0};
        TestFrame frame(geometry, random);
        const Picture before = frame.picture();
        Picture expected = before;
        for (int i = 0; i < geometry.width * geometry.height; ++i) {
            const int x = i % geometry.width, y = i / geometry.width;
            int sum = 8;
            for (int k = 0; k < 9; ++k) {
                const int dx = k % 3 - 1, dy = k / 3 - 1;
                const int weight = (2 - std::abs(dx)) * (2 - std::abs(dy));
                sum += weight * channelOf(before.nearest(x + dx, y + dy), 3);
            }
            expected.at(x, y) = (before.at(x, y) & 0xFFFFFF) | static_cast<std::uint32_t>(sum / 16) << 24;
        }
        Workers workers(2, round % 3 != 0);
        const hosting::WorkerLoan loan(round % 4 == 0 ? nullptr : &workers);
        SmoothAlpha(frame.row(0), frame.handle()->rowBytes, geometry.width, geometry.height);
        EXPECT_EQ(workers.runs, round % 4 == 0 || height < 128 ? 0 : 1);
        ASSERT_TRUE(samePicture(expected, frame.picture())) << geometry;
        ASSERT_TRUE(frame.guardsHold());
        SmoothAlpha(frame.row(0), 16, -1, 4);
        SmoothAlpha(frame.row(0), 16, 4, minimum);
        ASSERT_TRUE(samePicture(expected, frame.picture()));
    }
}

}  // namespace
