// SPDX-License-Identifier: MIT
// Frames that no cache holds are written past the caches, where rows begin anywhere in a vector: each comes
// out as its parts do, which are small enough to be written as ever.
#include "tests/support/filter_under_test.h"

namespace {

struct Work {
    const char* name;
    std::uint32_t id;
};

/// Filters that work pixel by pixel, whatever the row.
constexpr Work works[] = {{"Black & White", 10006},   {"Color Balance (RGB)", 10013},
                          {"Color Pass", 10015},      {"Color Replace", 10016},
                          {"Extract", 10022},         {"Gamma Correction", 10026},
                          {"Horizontal Flip", 10030}, {"Solarize", 10049}};

class LargeFrames : public testing::TestWithParam<Work> {};

TEST_P(LargeFrames, ComeOutAsTheirPartsDo) {
    // Rows of odd length begin at every pixel of a vector.
    constexpr int width = 2051;
    constexpr int partHeight = 515;
    constexpr int parts = 4;
    FilterUnderTest filter(GetParam().id);
    filter.call(FilterSelectorInitSettings);
    Random random(1);
    TestFrame source({.width = width, .height = parts * partHeight}, random);
    TestFrame destination(source.geometry());
    filter.render(source, destination);
    ASSERT_TRUE(destination.outerGuardsHold());
    for (int part = 0; part < parts; ++part) {
        const auto cut = [part](TestFrame& whole) {
            Picture rows{width, partHeight};
            std::memcpy(rows.row(0), whole.row(part * partHeight), 4 * rows.pixels.size());
            return rows;
        };
        TestFrame small({.width = width, .height = partHeight}, cut(source));
        ASSERT_TRUE(samePicture(filter.rendered(small), cut(destination))) << "part " << part;
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, LargeFrames, testing::ValuesIn(works), [](const auto& instance) {
    std::string name = instance.param.name;
    std::erase_if(name, [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; });
    return name;
});

}  // namespace
