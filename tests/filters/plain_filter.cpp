// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

void expectEqualsPlain(std::uint32_t id, const Choice& choose) {
    constexpr std::uint16_t fieldFlags[] = {0, 0x0100, 0x0200, 0x0400, 0x0800, 0x0500, 0xF0FF};
    Random random(id);
    for (const Geometry& geometry : geometriesOfEveryWidth()) {
        FilterUnderTest filter(id);
        filter.invocation.fieldFlags = oneOf(fieldFlags, random);
        Picture picture = TestFrame(geometry, random).picture();
        const PlainFilter plain = choose(filter, picture, random);
        TestFrame source(geometry, picture);
        const auto* perPixel = std::get_if<PlainPixel>(&plain);
        if (perPixel != nullptr) std::ranges::transform(picture.pixels, picture.pixels.begin(), *perPixel);
        if (perPixel == nullptr) picture = std::get<PlainFrame>(plain)(source);
        EXPECT_TRUE(samePicture(picture, filter.rendered(source)));
        if (perPixel != nullptr) {
            filter.render(source, source);
            EXPECT_TRUE(samePicture(picture, source.picture()) && source.guardsHold()) << "in place";
        }
        if (testing::Test::HasFailure()) {
            FAIL() << geometry << ", field flags " << filter.invocation.fieldFlags << ", settings "
                   << testing::PrintToString(filter.settings());
        }
    }
}
