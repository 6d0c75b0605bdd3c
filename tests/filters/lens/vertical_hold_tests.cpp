// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t verticalHoldId = 10053;

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
