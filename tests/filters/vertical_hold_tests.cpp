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
        for (const int width : {1, 3, 40}) {
            TestFrame source({.width = width, .height = height, .padding = 12}, random);
            for (const int time : {0, 1, 2, 5, 14, 15, 27, 28, 29, 30, 31, 59, 1000, 2147483647}) {
                filter.invocation.frameTime = static_cast<std::uint32_t>(time);
                EXPECT_TRUE(samePicture(rolled(source.picture(), time), filter.rendered(source)))
                    << width << " x " << height << ", time " << time;
            }
        }
    }
}

TEST(VerticalHold, CopiesAtNegativeTimes) {
    Random random(2);
    TestFrame source({.width = 20, .height = 30}, random);
    FilterUnderTest filter(verticalHoldId);
    for (const int time : {-1, -29, -31, INT32_MIN}) {
        filter.invocation.frameTime = static_cast<std::uint32_t>(time);
        EXPECT_TRUE(samePicture(source.picture(), filter.rendered(source))) << time;
    }
    filter.invocation.frameTime = static_cast<std::uint32_t>(-30);
    EXPECT_TRUE(samePicture(rolled(source.picture(), 0), filter.rendered(source)));
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

TEST(VerticalHold, WritesNothingOutsideTheDestination) {
    Random random(3);
    FilterUnderTest filter(verticalHoldId);
    const Geometry sources[] = {{.width = 4, .height = 2}, {.width = 90, .height = 90}};
    for (const Geometry& geometry : sources) {
        TestFrame source(geometry, random);
        for (const Geometry& other : awkwardGeometries()) {
            TestFrame destination(other);
            filter.invocation.frameTime = static_cast<std::uint32_t>(random());
            filter.render(source, destination);
            EXPECT_TRUE(destination.guardsHold()) << other;
        }
    }
    // So high that the shift leaves 16 bits.
    TestFrame source({.width = 1, .height = 40000}, random);
    TestFrame destination({.width = 1, .height = 40000}, random);
    for (std::uint32_t time = 20; time < 30; ++time) {
        filter.invocation.frameTime = time;
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold());
    }
}

}  // namespace
