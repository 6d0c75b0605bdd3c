// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

#include <algorithm>

namespace {

constexpr std::uint32_t colorBalanceId = 10013;

Picture balanced(Picture picture, int red, int green, int blue) {
    for (std::uint32_t& pixel : picture.pixels) {
        pixel = pixelOf(std::min(channelOf(pixel, 0) * blue / 255, 255),
                        std::min(channelOf(pixel, 1) * green / 255, 255),
                        std::min(channelOf(pixel, 2) * red / 255, 255), channelOf(pixel, 3));
    }
    return picture;
}

TEST(ColorBalance, EqualsThePlainVersionOnAnyFrame) {
    Random random(1);
    FilterUnderTest filter(colorBalanceId);
    constexpr int factors[] = {0, 1, 127, 128, 254, 255, 256, 300, 509, 510, 511, 32768, 65535};
    const auto anyFactor = [&] { return factors[random() % std::size(factors)]; };
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        const int red = anyFactor(), green = anyFactor(), blue = anyFactor();
        filter.setSettings<std::uint16_t>({static_cast<std::uint16_t>(red), static_cast<std::uint16_t>(green),
                                           static_cast<std::uint16_t>(blue)});
        EXPECT_TRUE(samePicture(balanced(source.picture(), red, green, blue), filter.rendered(source)))
            << geometry << ", factors " << red << ' ' << green << ' ' << blue;
    }
}

TEST(ColorBalance, WorkedPixels) {
    FilterUnderTest filter(colorBalanceId);
    TestFrame source({.width = 3, .height = 1}, Picture{3, 1, {0x40808080, 0x007F7F7F, 0xFF010203}});
    EXPECT_TRUE(samePicture(source.picture(), filter.rendered(source))) << "without settings";
    filter.setSettings<std::uint16_t>({510, 0, 255});
    EXPECT_TRUE(samePicture(Picture{3, 1, {0x40FF0080, 0x00FE007F, 0xFF020003}}, filter.rendered(source)));
}

TEST(ColorBalance, RemembersTheServicesOfTheFirstCall) {
    Random random(2);
    TestFrame source({.width = 8, .height = 2}, random);
    FilterUnderTest filter(colorBalanceId);
    filter.call(FilterSelectorInitSettings);
    filter.invocation.hostInstanceData = nullptr;
    filter.setSettings<std::uint16_t>({0, 0, 0});
    EXPECT_TRUE(samePicture(balanced(source.picture(), 0, 0, 0), filter.rendered(source)));
}

TEST(ColorBalance, WritesNothingOutsideTheDestination) {
    Random random(3);
    FilterUnderTest filter(colorBalanceId);
    TestFrame source({.width = 20, .height = 10}, random);
    for (const Geometry& geometry :
         {Geometry{.width = 7, .height = 3}, Geometry{.width = 20, .height = 10, .negativeRowBytes = true},
          Geometry{.width = 0, .height = 10}, Geometry{.width = 20, .height = 4}}) {
        TestFrame destination(geometry);
        filter.render(source, destination);
        EXPECT_TRUE(destination.outerGuardsHold()) << geometry;
    }
}

}  // namespace
