// SPDX-License-Identifier: MIT
#include "filters/warp/bend.h"
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t bendId = 10004;
constexpr Bend::Settings initial{{0, 0, 15, 4, 50}, {0, 0, 15, 4, 50}, 0x00FFFFFF};

TEST(Bend, WithoutAWorkBufferTheSourceIsOverwritten) {
    Random random(45);
    TestFrame source({.width = 30, .height = 20}, random), destination(source.geometry(), random);
    FilterUnderTest filter(bendId);
    filter.invocation.frameTime = 7;
    const Picture expected = filter.rendered(source);
    Bend::Settings columns = initial;
    columns.vertical.intensity = 0;
    filter.setRecord(columns);
    const Picture columnsOnly = filter.rendered(source);
    Bend::bend(source.handle(), destination.handle(), nullptr, 7, initial);
    EXPECT_TRUE(samePicture(expected, destination.picture()));
    EXPECT_TRUE(samePicture(columnsOnly, source.picture()));
}

TEST(Bend, TimeRunsInFieldDurations) {
    Random random(46);
    TestFrame source({.width = 30, .height = 20}, random);
    FilterUnderTest filter(bendId);
    filter.invocation.frameTime = 7;
    const Picture expected = filter.rendered(source);
    const TimeBase timeBase{{}, 1001};
    filter.invocation.timeBase = &timeBase;
    for (const std::uint32_t time : {7 * 1001, 7 * 1001 + 1000}) {
        filter.invocation.frameTime = time;
        EXPECT_TRUE(samePicture(expected, filter.rendered(source))) << time;
    }
}

}  // namespace
