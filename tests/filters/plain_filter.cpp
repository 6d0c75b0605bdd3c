// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

void expectEqualsPlain(std::uint32_t id, const Choice& choose) {
    Random random(id);
    for (const Geometry& geometry : geometriesOfEveryWidth()) {
        FilterUnderTest filter(id);
        Picture picture = TestFrame(geometry, random).picture();
        const PlainFilter plain = choose(filter, picture, random);
        TestFrame source(geometry, picture);
        for (std::uint32_t& pixel : picture.pixels) pixel = plain(pixel);
        EXPECT_TRUE(samePicture(picture, filter.rendered(source)));
        filter.render(source, source);
        EXPECT_TRUE(samePicture(picture, source.picture()) && source.guardsHold()) << "in place";
        if (testing::Test::HasFailure()) {
            FAIL() << geometry << ", settings " << testing::PrintToString(filter.settings());
        }
    }
}
