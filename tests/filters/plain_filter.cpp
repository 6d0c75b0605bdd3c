// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

#include <sstream>

namespace {

std::vector<Geometry> plainGeometries() {
    std::vector<Geometry> geometries = awkwardGeometries();
    for (int width = 1; width < 200; ++width) {
        geometries.push_back({.width = width, .height = 1 + width % 7, .padding = width % 3 * 4});
    }
    for (const int width : {511, 512, 700, 2125}) geometries.push_back({.width = width, .height = 3});
    return geometries;
}

std::string described(const FilterUnderTest& filter, const Geometry& geometry) {
    std::ostringstream text;
    text << geometry << ", field flags " << filter.invocation.fieldFlags << ", time "
         << filter.invocation.frameTime << " of " << filter.invocation.clipDuration << ", settings "
         << testing::PrintToString(filter.settings());
    return text.str();
}

template <class Plain, class Compare>
void forEachChoice(std::uint32_t id, const Choice<Plain>& choose, const Compare& compare) {
    Random random(id);
    for (const Geometry& geometry : plainGeometries()) {
        FilterUnderTest filter(id);
        Picture picture = TestFrame(geometry, random).picture();
        const Plain plain = choose(filter, picture, random);
        TestFrame source(geometry, picture);
        compare(filter, source, plain);
        if (testing::Test::HasFailure()) {
            ADD_FAILURE() << described(filter, geometry);
            return;
        }
    }
}

}  // namespace

void expectEqualsPlain(std::uint32_t id, const Choice<PlainFilter>& choose) {
    forEachChoice(id, choose, [](FilterUnderTest& filter, TestFrame& source, const PlainFilter& plain) {
        EXPECT_TRUE(samePicture(plain(source), filter.rendered(source)));
    });
}

void expectPixelsEqualPlain(std::uint32_t id, const Choice<PlainPixel>& choose) {
    forEachChoice(id, choose, [](FilterUnderTest& filter, TestFrame& source, const PlainPixel& plain) {
        Picture expected = source.picture();
        for (std::uint32_t& pixel : expected.pixels) pixel = plain(pixel);
        EXPECT_TRUE(samePicture(expected, filter.rendered(source)));
        filter.render(source, source);
        EXPECT_TRUE(samePicture(expected, source.picture()) && source.guardsHold()) << "in place";
    });
}
