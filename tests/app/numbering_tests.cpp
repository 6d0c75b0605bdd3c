// SPDX-License-Identifier: MIT
#include "app/media/frame_numbering.h"

#include <gtest/gtest.h>

namespace vireo {
namespace {

TEST(FrameNumbering, CountsFramesInTheOrderOfTheirTimes) {
    FrameNumbering numbering;
    for (std::int64_t time : {0, 30, 10, 20}) numbering.sent(time);
    for (std::int64_t time : {0, 10, 20, 30}) {
        const auto numbered = numbering.next(time);
        EXPECT_EQ(numbered.number, time / 10);
        EXPECT_TRUE(numbered.lost.empty());
    }
    EXPECT_TRUE(numbering.rest().empty());
}

TEST(FrameNumbering, LostFramesKeepTheirNumbers) {
    FrameNumbering numbering;
    for (std::int64_t time : {0, 10, 20, 30, 40}) numbering.sent(time);
    EXPECT_EQ(numbering.next(0).number, 0);
    numbering.failed();
    const auto after = numbering.next(20);
    ASSERT_EQ(after.lost.size(), 1U);
    EXPECT_EQ(after.lost[0].number, 1);
    EXPECT_EQ(after.lost[0].time, 10);
    EXPECT_EQ(after.number, 2);
    numbering.failed();
    const auto rest = numbering.rest();
    ASSERT_EQ(rest.size(), 2U);
    EXPECT_EQ(rest[1].number, 4);
}

TEST(FrameNumbering, PacketsThatNobodyComplainedOfHeldNoFrame) {
    FrameNumbering numbering;
    for (std::int64_t time : {0, 5, 10, 15}) numbering.sent(time);
    EXPECT_EQ(numbering.next(0).number, 0);
    const auto second = numbering.next(10);
    EXPECT_EQ(second.number, 1);
    EXPECT_TRUE(second.lost.empty());
    EXPECT_TRUE(numbering.rest().empty());
}

TEST(FrameNumbering, KnownTimesNumberFramesAfterASeek) {
    FrameNumbering numbering({0, 40, 80, 120, 160});
    for (std::int64_t time : {80, 160, 120}) numbering.sent(time);
    EXPECT_EQ(numbering.next(80).number, 2);
    numbering.failed();
    const auto last = numbering.next(160);
    EXPECT_EQ(last.number, 4);
    ASSERT_EQ(last.lost.size(), 1U);
    EXPECT_EQ(last.lost[0].number, 3);
}

}  // namespace
}  // namespace vireo
