// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t verticalFlipId = 10052;

TEST(VerticalFlip, MovesAllRowsButTheLastWithTheirPaddingAndCountsInSixteenBits) {
    Random random(1);
    FilterUnderTest filter(verticalFlipId);
    std::vector<Geometry> geometries = awkwardGeometries();
    geometries.push_back({.width = 2051, .height = 2060});                          // No cache holds it.
    geometries.push_back({.width = 30, .height = 4, .padding = 65536 + 48 - 120});  // 48 bytes a row
    geometries.push_back({.width = 1, .height = 65536 + 5});                        // 5 rows
    geometries.push_back({.width = 8192, .height = 3});                             // -32768 bytes a row
    geometries.push_back({.width = 16384, .height = 3});                            // 0 bytes a row
    geometries.push_back({.width = 1, .height = 32768});                            // -32768 rows
    for (const Geometry& geometry : geometries) {
        TestFrame source(geometry, random), destination(geometry, random);
        TestFrame expected = destination;
        const std::int32_t stride = source.handle()->rowBytes;
        const auto rowBytes = static_cast<std::int16_t>(stride),
                   rows = static_cast<std::int16_t>(geometry.height);
        for (int row = 0; rowBytes > 0 && row < rows - 1; ++row) {
            std::memcpy(expected.row(0) + rowBytes * (rows - 2 - row), source.row(0) + rowBytes * row,
                        static_cast<std::size_t>(rowBytes));
        }
        filter.render(source, destination);
        const std::size_t size = static_cast<std::size_t>(stride) * static_cast<std::size_t>(geometry.height);
        EXPECT_EQ(std::memcmp(destination.row(0), expected.row(0), size), 0) << geometry;
        EXPECT_TRUE(destination.outerGuardsHold());
    }
}

}  // namespace
