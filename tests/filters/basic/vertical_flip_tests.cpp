// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t verticalFlipId = 10052;

TEST(VerticalFlip, MovesAllRowsButTheLastAndTheirPadding) {
    Random random(1);
    FilterUnderTest filter(verticalFlipId);
    std::vector<Geometry> geometries = awkwardGeometries();
    geometries.push_back({.width = 2051, .height = 2060});  // No cache holds it.
    for (const Geometry& geometry : geometries) {
        TestFrame source(geometry, random);
        TestFrame destination(geometry, random);
        TestFrame before = destination;
        filter.render(source, destination);

        const int last = geometry.height - 1;
        const auto rowBytes = static_cast<std::size_t>(source.handle()->rowBytes);
        for (int row = 0; row < last; ++row) {
            EXPECT_EQ(std::memcmp(destination.row(last - 1 - row), source.row(row), rowBytes), 0)
                << geometry << ", row " << row;
        }
        EXPECT_EQ(std::memcmp(destination.row(last), before.row(last), rowBytes), 0) << geometry;
        EXPECT_TRUE(destination.outerGuardsHold());
    }
}

TEST(VerticalFlip, CountsRowsAndRowBytesInSixteenBits) {
    Random random(3);
    FilterUnderTest filter(verticalFlipId);

    // 65584 bytes a row count as 48.
    const Geometry wide{.width = 30, .height = 4, .padding = 65584 - 120};
    TestFrame source(wide, random);
    TestFrame destination(wide);
    filter.render(source, destination);
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(std::memcmp(destination.row(0) + 48 * (2 - row), source.row(0) + 48 * row, 48), 0);
    }

    // 65541 rows count as 5.
    const Geometry tall{.width = 1, .height = 65541};
    TestFrame tallSource(tall, random);
    TestFrame tallDestination(tall);
    Picture expected = tallDestination.picture();
    for (int row = 0; row < 4; ++row) expected.at(0, 3 - row) = tallSource.picture().at(0, row);
    filter.render(tallSource, tallDestination);
    EXPECT_TRUE(samePicture(expected, tallDestination.picture()));
}

TEST(VerticalFlip, LeavesFramesAloneThatSixteenBitsCannotCount) {
    Random random(4);
    FilterUnderTest filter(verticalFlipId);
    for (const Geometry& geometry : {Geometry{.width = 8192, .height = 3},      // -32768 bytes a row
                                     Geometry{.width = 16384, .height = 3},     // 0 bytes a row
                                     Geometry{.width = 1, .height = 32768}}) {  // -32768 rows
        TestFrame source(geometry, random);
        TestFrame destination(geometry, random);
        const Picture before = destination.picture();
        filter.render(source, destination);
        EXPECT_TRUE(samePicture(before, destination.picture())) << geometry;
    }
}

}  // namespace
