// SPDX-License-Identifier: MIT
#include "host/pixkit/pixel_formats.h"
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t horizontalFlipId = 10030;

struct FormatCase {
    std::uint32_t code;
    int pixelBytes;
};

const FormatCase formatCases[] = {
    {PixKit::formatCode("VUya"), 16}, {PixKit::formatCode("BGra"), 16}, {PixKit::formatCode("ARgb"), 16},
    {PixKit::formatCode("Vuya"), 8},  {PixKit::formatCode("Bgra"), 8},  {PixKit::formatCode("Argb"), 8},
    {PixKit::formatCode("vuya"), 4},  {PixKit::formatCode("argb"), 4},  {PixKit::formatCode("bgra"), 4},
};

void expectMirrored(const FormatCase& format, Geometry geometry, Random& random) {
    geometry.pixelBytes = format.pixelBytes;
    TestFrame source(geometry, random);
    geometry.padding += 3;  // Each frame steps by its own row bytes.
    TestFrame destination(geometry);
    FilterUnderTest filter(horizontalFlipId);
    filter.pixelFormat = format.code;
    filter.render(source, destination);
    ASSERT_TRUE(destination.guardsHold());
    for (int y = 0; y < geometry.height; ++y) {
        for (int x = 0; x < geometry.width; ++x) {
            ASSERT_EQ(std::memcmp(destination.row(y) + x * format.pixelBytes,
                                  source.row(y) + (geometry.width - 1 - x) * format.pixelBytes,
                                  static_cast<std::size_t>(format.pixelBytes)),
                      0)
                << geometry << ", column " << x << ", row " << y;
        }
    }
}

TEST(HorizontalFlip, MirrorsWholePixelsOfEveryFormat) {
    Random random(1);
    for (const FormatCase& format : formatCases) {
        for (const Geometry& geometry : awkwardGeometries()) expectMirrored(format, geometry, random);
        for (int width = 1; width < 140; ++width) expectMirrored(format, {.width = width}, random);
    }
    // Frames that no cache holds.
    for (const int padding : {0, 1, 4}) {
        expectMirrored(formatCases[8], {.width = 2051, .height = 2060, .padding = padding}, random);
    }
}

TEST(HorizontalFlip, LeavesTheDestinationOfUnknownFormatsAlone) {
    Random random(2);
    FilterUnderTest filter(horizontalFlipId);
    for (const std::uint32_t code : {PixKit::formatCode("badf"), PixKit::formatCode("BGRA"), 0u}) {
        TestFrame source({.width = 9, .height = 3}, random), destination({.width = 9, .height = 3});
        filter.pixelFormat = code;
        filter.render(source, destination);
        EXPECT_TRUE(samePicture(Picture{9, 3}, destination.picture()));
    }
}

TEST(HorizontalFlip, SmallerSourceLeavesTheRestAlone) {
    Random random(3);
    TestFrame source({.width = 6, .height = 2}, random);
    TestFrame destination({.width = 9, .height = 3});
    FilterUnderTest filter(horizontalFlipId);
    source.handle()->bounds.bottom = 1;
    filter.render(source, destination);
    Picture expected{9, 3};
    for (int x = 0; x < 6; ++x) expected.at(8 - x, 0) = source.picture().at(x, 0);
    EXPECT_TRUE(samePicture(expected, destination.picture()));
}

}  // namespace
