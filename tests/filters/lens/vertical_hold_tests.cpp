// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t verticalHoldId = 10053;

/// Rows are counted from the picture's top here.
std::uint32_t& pictureAt(Picture& picture, int x, int y) { return picture.at(x, picture.height - 1 - y); }

Picture rolled(Picture source, int time) {
    const int height = source.height;
    const int shift = static_cast<int>(time % 30 / 29.0 * height);
    const int seam = height - shift;
    const int bar = height / 6;
    const int barTop = std::max(seam - bar, 0);
    Picture result{source.width, height};
    for (int x = 0; x < source.width; ++x) {
        for (int y = 0; y < height; ++y) {
            pictureAt(result, x, y) = pictureAt(source, x, (y + shift) % height);
        }
        for (int y = barTop; y < seam; ++y) {
            const int countdown = y - barTop + 1;
            const int lineTop = seam - barTop - 3;
            const bool line = countdown <= lineTop && countdown >= lineTop - bar / 10;
            pictureAt(result, x, y) = line ? ~source.at(x, height / 4) : 0;
        }
    }
    return result;
}

TEST(VerticalHold, EqualsThePlainVersionAtAnyTime) {
    Random random(1);
    FilterUnderTest filter(verticalHoldId);
    for (const int height : {1, 5, 6, 17, 18, 24, 59, 60, 120}) {
        for (const int width : {1, 3, 40, 77}) {
            TestFrame source({.width = width, .height = height, .padding = 12}, random);
            for (const int time : {0, 1, 2, 5, 14, 15, 27, 28, 29, 30, 31, 59, 1000, INT32_MAX, -1, -29, -30,
                                   -31, INT32_MIN}) {
                filter.invocation.frameTime = static_cast<std::uint32_t>(time);
                const bool rolls = time >= 0 || time == -30;
                EXPECT_TRUE(
                    samePicture(rolls ? rolled(source.picture(), std::max(time, 0)) : source.picture(),
                                filter.rendered(source)))
                    << width << " x " << height << ", time " << time;
            }
        }
    }
}

TEST(VerticalHold, CopiesNothingPastASeamAboveTheBounds) {
    Random random(4);
    const Geometry geometry{.width = 6, .height = 20, .top = 10};
    TestFrame source(geometry, random);
    TestFrame destination(geometry, random);
    const Picture before = destination.picture();
    FilterUnderTest filter(verticalHoldId);
    filter.invocation.frameTime = 29;
    filter.render(source, destination);
    EXPECT_TRUE(samePicture(before, destination.picture()));
}

TEST(VerticalHold, KeepsToFramesSoHighThatTheShiftLeavesSixteenBits) {
    Random random(3);
    FilterUnderTest filter(verticalHoldId);
    TestFrame source({.width = 1, .height = 40000}, random), destination({.width = 1, .height = 40000});
    for (filter.invocation.frameTime = 20; filter.invocation.frameTime < 30; ++filter.invocation.frameTime) {
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold());
    }
}

}  // namespace
