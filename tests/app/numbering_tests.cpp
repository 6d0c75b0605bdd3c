// SPDX-License-Identifier: MIT
#include "app/media/frame_numbering.h"

#include <gtest/gtest.h>

namespace vireo {
namespace {

constexpr std::int64_t failure = -1;
using Times = std::vector<std::int64_t>;

/// The numbers of frames that were received, and of lost ones with their times, up to the clip's end.
std::string numbered(FrameNumbering numbering, const Times& sent, const Times& received) {
    for (const std::int64_t time : sent) numbering.sent(time);
    std::string all;
    const auto add = [&all](const std::vector<FrameNumbering::Lost>& lost) {
        for (const auto& frame : lost)
            all += '(' + std::to_string(frame.number) + " at " + std::to_string(frame.time) + ") ";
    };
    for (const std::int64_t time : received) {
        if (time == failure) {
            numbering.failed();
            continue;
        }
        const auto frame = numbering.next(time);
        add(frame.lost);
        all += std::to_string(frame.number) + ' ';
    }
    add(numbering.rest());
    return all;
}

TEST(FrameNumbering, CountsFramesAndWhatWasLostBetweenThem) {
    EXPECT_EQ(numbered(FrameNumbering(), {0, 30, 10, 20}, {0, 10, 20, 30}), "0 1 2 3 ");
    EXPECT_EQ(numbered(FrameNumbering(), {0, 10, 20, 30, 40}, {0, failure, 20, failure}),
              "0 (1 at 10) 2 (3 at 30) (4 at 40) ");
    EXPECT_EQ(numbered(FrameNumbering(), {0, 5, 10, 15}, {0, 10}), "0 1 ")
        << "nobody complained: they held no frame";
    EXPECT_EQ(numbered(FrameNumbering(), {0, 10, 20, 25, 30}, {0, failure, 20, 30}), "0 (1 at 10) 2 3 ");
    EXPECT_EQ(numbered(FrameNumbering({0, 40, 80, 120, 160}), {80, 160, 120}, {80, failure, 160}),
              "2 (3 at 120) 4 ");
}

}  // namespace
}  // namespace vireo
