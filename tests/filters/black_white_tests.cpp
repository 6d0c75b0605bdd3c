// SPDX-License-Identifier: MIT
#include "filters/warp/black_white.h"
#include "framework/vpix_suites.h"
#include "host/pixkit/pixel_formats.h"
#include "host/vireo_host.h"
#include "host/vrm/suites.h"
#include "tests/filters/support/kernel_rows.h"

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

std::uint32_t neutral(std::uint32_t pixel) {
    return pixelOf(128, 128, channelOf(pixel, 2), channelOf(pixel, 3));
}

Picture mapped(Picture picture, std::uint32_t (*map)(std::uint32_t)) {
    for (std::uint32_t& pixel : picture.pixels) pixel = map(pixel);
    return picture;
}

/// Sets a frame's format while it lives.
class InFormat {
public:
    InFormat(TestFrame& frame, std::uint32_t code) : handle_(frame.handle()) {
        vireoHostSetPixelFormat(handle_, code);
    }
    InFormat(const InFormat&) = delete;
    InFormat& operator=(const InFormat&) = delete;
    ~InFormat() { vireoHostSetPixelFormat(handle_, PixKit::formatBgra); }

private:
    FrameBuffer* handle_;
};

TEST(BlackWhite, WorkedPixels) {
    const struct {
        std::uint32_t pixel, result;
    } cases[] = {{0x00FFFFFF, 0x00FFFFFF},
                 {0x80FF0000, 0x804C4C4C},
                 {0x8000FF00, 0x80969696},
                 {0xFF0000FF, 0xFF1D1D1D},
                 {0xFF000000, 0xFF000000}};
    for (const auto& example : cases) {
        TestFrame source({.width = 1, .height = 1}, Picture{1, 1, {example.pixel}});
        EXPECT_EQ(FilterUnderTest(blackWhiteId).rendered(source).at(0, 0), example.result);
    }
}

TEST(BlackWhite, EqualsThePlainVersionInBothFormats) {
    Random random(10);
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        FilterUnderTest filter(blackWhiteId);
        EXPECT_TRUE(samePicture(mapped(source.picture(), grey), filter.rendered(source))) << geometry;
        const InFormat vuya(source, PixKit::formatVuya);
        EXPECT_TRUE(samePicture(mapped(source.picture(), neutral), filter.rendered(source))) << geometry;
    }
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

TEST(BlackWhite, ReadsAndWritesNothingOutsideItsFrames) {
    Random random(12);
    TestFrame source({.width = 9, .height = 3}, random);
    TestFrame destination({.width = 40, .height = 30}, random);
    FilterUnderTest filter(blackWhiteId);
    filter.render(source, destination);
    EXPECT_TRUE(destination.guardsHold());
    for (const std::int32_t rowBytes : {0, -160, 1 << 30, INT32_MIN, INT32_MAX}) {
        destination.handle()->rowBytes = rowBytes;
        destination.handle()->bounds.bottom = rowBytes == 0 ? 30 : 1;
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold()) << rowBytes;
    }
}

TEST(BlackWhite, AsksTheSuiteWhereTheHostTableIsSilent) {
    Random random(13);
    TestFrame source({.width = 20, .height = 2}, random);
    const InFormat vuya(source, PixKit::formatVuya);
    const PixelFormatFunctions emptyTable{};
    HostCallbacks withoutSlot = *vireoHostCallbacks();
    withoutSlot.pixelFormat = &emptyTable;
    HostCallbacks withoutTable = withoutSlot;
    withoutTable.pixelFormat = nullptr;
    for (const HostCallbacks* callbacks : {&withoutSlot, &withoutTable}) {
        FilterUnderTest filter(blackWhiteId);
        filter.invocation.hostCallbacks = callbacks;
        EXPECT_TRUE(samePicture(mapped(source.picture(), neutral), filter.rendered(source)));
    }
}

TEST(BlackWhiteKernels, FlagsSelectInTheirOrder) {
    using BlackWhite::greyKernel;
    const auto& tables = blackWhiteKernelsTables;
    const auto portable = greyKernel({.best = false, .vector = false});
    EXPECT_EQ(greyKernel({}), tables.chosen().grey);
    EXPECT_EQ(greyKernel({.best = true, .vector = false}), tables.chosen().grey);
    EXPECT_EQ(greyKernel({.best = false, .vector = true}), tables.at(simd::InstructionSet::Baseline).grey);
    for (const auto set : runnableInstructionSets()) EXPECT_NE(portable, tables.at(set).grey);
}

TEST(BlackWhiteKernels, EveryKernelEqualsThePlainVersion) {
    Random random(14);
    const auto portable = BlackWhite::greyKernel({.best = false, .vector = false});
    expectRowsEqualPlain(
        random, [](auto set, auto... row) { blackWhiteKernelsTables.at(set).grey(row...); }, grey);
    expectRowsEqualPlain(
        random, [&](auto, auto... row) { portable(row...); }, grey);
    expectRowsEqualPlain(
        random, [](auto set, auto... row) { blackWhiteKernelsTables.at(set).neutralChroma(row...); },
        neutral);
}

TEST(BlackWhiteKernels, EverySetAgreesOnEveryColor) {
    // Where the sum meets a whole number its last bit decides, so all colours are tried.
    constexpr std::int64_t width = 1 << 16;
    std::vector<std::uint32_t> colors(width), greys(width), expected(width);
    for (std::uint32_t red = 0; red < 256; ++red) {
        for (std::uint32_t i = 0; i < width; ++i) {
            colors[i] = red << 16 | i;
            expected[i] = grey(colors[i]);
        }
        for (const auto set : runnableInstructionSets()) {
            blackWhiteKernelsTables.at(set).grey(reinterpret_cast<const std::uint8_t*>(colors.data()),
                                                 reinterpret_cast<std::uint8_t*>(greys.data()), width);
            ASSERT_EQ(greys, expected) << instructionSetName(set) << ", red " << red;
        }
    }
}

}  // namespace
