// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t replicateId = 10042;

class ReplicateTest : public testing::Test {
protected:
    Picture replicated(TestFrame& source, int count) {
        filter.setSettings<std::int16_t>({static_cast<std::int16_t>(count)});
        return filter.rendered(source);
    }

    /// What rendered() finds in a destination that nobody writes.
    static Picture untouched(const Geometry& geometry) {
        Random random(static_cast<Random::result_type>(geometry.width));
        return TestFrame(geometry, random).picture();
    }

    Random random{1};
    FilterUnderTest filter{replicateId};
};

TEST_F(ReplicateTest, CopiesTheWholeFrameOnce) {
    for (const Geometry& geometry : awkwardGeometries()) {
        if (geometry.left != 0) continue;
        TestFrame source(geometry, random);
        EXPECT_TRUE(samePicture(source.picture(), replicated(source, 1))) << geometry;
    }
}

TEST_F(ReplicateTest, RepeatsTheReducedFrame) {
    for (const int count : {2, 3, 5, 16}) {
        // Blocks of one colour, so that the mean of a block is exact.
        Picture blocks{count * 12, count * 7};
        Picture reduced{12, 7};
        for (std::uint32_t& pixel : reduced.pixels) pixel = static_cast<std::uint32_t>(random());
        for (int row = 0; row < blocks.height; ++row) {
            for (int x = 0; x < blocks.width; ++x) blocks.at(x, row) = reduced.at(x / count, row / count);
        }
        Picture expected{blocks.width, blocks.height};
        for (int row = 0; row < blocks.height; ++row) {
            for (int x = 0; x < blocks.width; ++x) expected.at(x, row) = reduced.at(x % 12, row % 7);
        }
        TestFrame source({.width = blocks.width, .height = blocks.height, .padding = 8}, blocks);
        EXPECT_TRUE(samePicture(expected, replicated(source, count))) << count;
        if (count != 2) continue;
        filter.dropSettings();
        EXPECT_TRUE(samePicture(expected, filter.rendered(source))) << "two without settings";
    }
}

TEST_F(ReplicateTest, LeavesNoGapBetweenCellsOfUnequalSize) {
    for (const auto& [width, height] : {std::pair{641, 48}, {48, 7}, {13, 13}, {100, 31}}) {
        Picture plain{width, height};
        for (std::uint32_t& pixel : plain.pixels) pixel = 0x12345678;
        TestFrame source({.width = width, .height = height}, plain);
        for (int count = 1; count <= std::min(width, height); ++count) {
            ASSERT_TRUE(samePicture(plain, replicated(source, count))) << count << " in " << width;
        }
    }
}

TEST_F(ReplicateTest, LeavesTheFrameAloneWhereCellsAreEmpty) {
    const Geometry geometry{.width = 20, .height = 11};
    TestFrame source(geometry, random);
    for (const int count : {0, -1, -32768, 12, 21, 32767}) {
        EXPECT_TRUE(samePicture(untouched(geometry), replicated(source, count))) << count;
    }
}

TEST_F(ReplicateTest, CountsCellsFromZeroAndNotFromTheBounds) {
    const Geometry geometry{.width = 8, .height = 6, .left = 3};
    Picture plain{8, 6};
    for (std::uint32_t& pixel : plain.pixels) pixel = 0x01020304;
    TestFrame source(geometry, plain);
    const Picture result = replicated(source, 1);
    Picture expected = untouched(geometry);
    for (int row = 0; row < 6; ++row) {
        for (int x = 0; x < 8 - 3; ++x) expected.at(x, row) = 0x01020304;
    }
    EXPECT_TRUE(samePicture(expected, result));
}

}  // namespace
