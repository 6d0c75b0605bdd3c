// SPDX-License-Identifier: MIT
#include "filters/warp/black_white.h"
#include "host/vireo_host.h"
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t blackWhiteId = 10006;

/// Single precision, rounded after each step as a processor without wider registers does.
std::uint32_t grey(std::uint32_t pixel) {
    volatile float sum = 0.299f * static_cast<float>(channelOf(pixel, 2));
    volatile float green = 0.587f * static_cast<float>(channelOf(pixel, 1));
    volatile float blue = 0.114f * static_cast<float>(channelOf(pixel, 0));
    sum = sum + green;
    sum = sum + blue;
    sum = sum + 0.5f;
    const int luma = std::min(static_cast<int>(sum), 255);
    return pixelOf(luma, luma, luma, channelOf(pixel, 3));
}

std::uint32_t neutral(std::uint32_t pixel) { return (pixel & 0xFFFF0000) | 0x8080; }

TEST(BlackWhite, EqualsThePlainVersionInBothFormats) {
    expectEqualsPlain(blackWhiteId, [](FilterUnderTest& filter, Picture&, Random& random) {
        filter.pixelFormat = random() % 2 == 0 ? PixKit::formatBgra : PixKit::formatVuya;
        return filter.pixelFormat == PixKit::formatVuya ? neutral : grey;
    });
}

TEST(BlackWhite, TakesItsSizeFromTheDestinationAndEachFramesOwnRowBytes) {
    Random random(11);
    TestFrame source({.width = 40, .height = 30, .padding = 7}, random);
    TestFrame destination({.width = 25, .height = 20, .padding = 18}, random);
    FilterUnderTest(blackWhiteId).render(source, destination);
    for (int y = 0; y < 20; ++y) {
        for (int x = 0; x < 25; ++x) {
            std::uint32_t from, to;
            std::memcpy(&from, source.row(0) + 164 * y + 4 * x, 4);
            std::memcpy(&to, destination.row(0) + 116 * y + 4 * x, 4);
            ASSERT_EQ(to, grey(from)) << x << ", " << y;
        }
    }
    EXPECT_TRUE(destination.outerGuardsHold());
}

TEST(BlackWhite, AsksTheSuiteWhereTheHostTableIsSilent) {
    TestFrame source({.width = 1, .height = 1}, Picture{1, 1, {0x12345678}});
    const PixelFormatFunctions emptyTable{};
    HostCallbacks withoutSlot = *vireoHostCallbacks();
    withoutSlot.pixelFormat = &emptyTable;
    HostCallbacks withoutTable = withoutSlot;
    withoutTable.pixelFormat = nullptr;
    for (const HostCallbacks* callbacks : {&withoutSlot, &withoutTable}) {
        FilterUnderTest filter(blackWhiteId);
        filter.invocation.hostCallbacks = callbacks;
        filter.pixelFormat = PixKit::formatVuya;
        EXPECT_EQ(filter.rendered(source).at(0, 0), 0x12348080U);
    }
}

// Where the sum meets a whole number its last bit decides, so all colours are tried.
TEST(BlackWhite, EveryKernelAgreesOnEveryColor) {
    const auto portable = BlackWhite::greyKernel({.best = false, .vector = false});
    const auto chosen = BlackWhite::greyKernel({}),
               best = BlackWhite::greyKernel({.best = true, .vector = false});
    const auto vector = BlackWhite::greyKernel({.best = false, .vector = true});
    EXPECT_EQ(chosen, best);
    EXPECT_NE(portable, chosen);
    EXPECT_NE(portable, vector);
    constexpr std::int64_t width = 1 << 16;
    std::vector<std::uint32_t> colors(width), greys(width), expected(width);
    for (std::uint32_t red = 0; red < 256; ++red) {
        for (std::uint32_t i = 0; i < width; ++i) {
            colors[i] = red << 16 | i;
            expected[i] = grey(colors[i]);
        }
        for (const auto kernel : {portable, vector, chosen}) {
            kernel({reinterpret_cast<const std::uint8_t*>(colors.data()),
                    reinterpret_cast<std::uint8_t*>(greys.data()), width});
            ASSERT_EQ(greys, expected) << "red " << red;
        }
    }
}

}  // namespace
