// SPDX-License-Identifier: MIT
#include "host/pixkit/pixkit.h"
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t replicateId = 10042;

/// Every cell is a copy of the first, which holds the whole frame; cells are counted from 0 and not from the
/// bounds.
Picture replicated(TestFrame& source, int count) {
    const Geometry& geometry = source.geometry();
    Random random(static_cast<Random::result_type>(geometry.width));
    TestFrame result(geometry, random);  // As the harness fills it.
    const auto cell = [&](int column, int row) {
        return FrameRect{geometry.width * column / count, geometry.height * row / count,
                         geometry.width * (column + 1) / count, geometry.height * (row + 1) / count};
    };
    if (count <= 0 || count > std::min(geometry.width, geometry.height)) return result.picture();
    const FrameRect first = cell(0, 0);
    vpixCopy(source.handle(), result.handle(), &source.handle()->bounds, &first, VPixCopyReplace);
    for (int i = 1; i < count * count; ++i) {
        const FrameRect target = cell(i % count, i / count);
        vpixCopy(result.handle(), result.handle(), &first, &target, VPixCopyReplace);
    }
    return result.picture();
}

TEST(Replicate, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(replicateId, [](FilterUnderTest& filter, Picture&, Random& random) {
        constexpr int counts[] = {-32768, -1, 0, 1, 1, 2, 3, 4, 5, 7, 13, 16, 32, 32767};
        const bool isSet = random() % 8 != 0;
        const int count = isSet ? oneOf(counts, random) : 2;
        if (isSet) filter.setSettings({static_cast<std::int16_t>(count)});
        return [count](TestFrame& source) { return replicated(source, count); };
    });
}

TEST(Replicate, LeavesNoGapBetweenCellsOfUnequalSize) {
    FilterUnderTest filter(replicateId);
    for (const auto& [width, height] : {std::pair{641, 48}, {48, 7}, {13, 13}, {100, 31}}) {
        Picture plain{width, height};
        for (std::uint32_t& pixel : plain.pixels) pixel = 0x12345678;
        TestFrame source({.width = width, .height = height}, plain);
        for (int count = 1; count <= std::min(width, height); ++count) {
            filter.setSettings({static_cast<std::int16_t>(count)});
            ASSERT_TRUE(samePicture(plain, filter.rendered(source))) << count << " in " << width;
        }
    }
}

}  // namespace
