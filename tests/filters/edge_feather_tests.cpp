// SPDX-License-Identifier: MIT
#include "filters/basic/edge_feather_kernels.h"
#include "tests/support/filter_under_test.h"

namespace {

constexpr std::uint32_t edgeFeatherId = 10020;

void scaleAlpha(Picture& picture, int x, int row, int factor) {
    if (x < 0 || x >= picture.width || row < 0 || row >= picture.height) return;
    std::uint32_t& pixel = picture.at(x, row);
    pixel = (pixel & 0x00FFFFFF) | static_cast<std::uint32_t>(channelOf(pixel, 3) * factor / 100) << 24;
}

Picture feathered(Picture picture, int amount, bool fieldMode) {
    const int width = picture.width;
    const int height = picture.height;
    const int n = static_cast<int>(amount * 4.0 / 3.0);
    const int step = fieldMode ? 2 : 1;
    int rows = fieldMode ? n / 2 : n;
    if (amount != 0 && rows == 0) rows = 1;
    for (int k = 0; k < rows; ++k) {
        for (int x = k * step; x < width - k * step; ++x) scaleAlpha(picture, x, k, 100 * (k + 1) / rows);
        for (int x = k * step; x < width - k * step; ++x) {
            scaleAlpha(picture, x, height - 1 - k, 100 * (k + 1) / rows);
        }
    }
    for (int c = 0; c < n; ++c) {
        const int factor = 100 * (c + 1) / n;
        const int r = c / step;
        for (int row = r + 1; row <= height - r - 2; ++row) scaleAlpha(picture, c, row, factor);
        const int run = height - r - ((c + 1) / step + 1);
        for (int i = 0; i < run; ++i) scaleAlpha(picture, width - 1 - c, r + 1 + i, factor);
    }
    return picture;
}

TEST(EdgeFeather, EqualsThePlainVersionOnAnyFrame) {
    Random random(1);
    FilterUnderTest filter(edgeFeatherId);
    constexpr int amounts[] = {-32768, -2, -1, 0, 1, 2, 3, 4, 7, 10, 25, 100, 32767};
    for (const Geometry& geometry : awkwardGeometries()) {
        TestFrame source(geometry, random);
        for (const std::uint16_t fieldFlags : {0, 0x0200}) {
            const int amount = amounts[random() % std::size(amounts)];
            filter.setSettings<std::int16_t>({static_cast<std::int16_t>(amount)});
            filter.invocation.fieldFlags = fieldFlags;
            EXPECT_TRUE(
                samePicture(feathered(source.picture(), amount, fieldFlags != 0), filter.rendered(source)))
                << geometry << ", amount " << amount << ", field flags " << fieldFlags;
        }
    }
}

TEST(EdgeFeather, WorkedAlphas) {
    Picture opaque{16, 12};
    for (std::uint32_t& pixel : opaque.pixels) pixel = 0xFF102030;
    TestFrame source({.width = 16, .height = 12}, opaque);
    FilterUnderTest filter(edgeFeatherId);

    filter.setSettings<std::int16_t>({3});
    const Picture result = filter.rendered(source);
    const struct {
        int x, row, alpha;
    } expected[] = {{0, 0, 63},   {15, 0, 63}, {0, 1, 63},  {1, 1, 127}, {15, 10, 63}, {2, 2, 191},
                    {13, 9, 191}, {3, 3, 255}, {8, 6, 255}, {0, 11, 63}, {8, 1, 127}};
    for (const auto& pixel : expected) {
        EXPECT_EQ(result.at(pixel.x, pixel.row), pixelOf(0x30, 0x20, 0x10, pixel.alpha))
            << pixel.x << ", " << pixel.row;
    }

    // In fields the right band's even columns reach the bottom band's row, which is scaled twice there.
    filter.invocation.fieldFlags = 0x0100;
    const Picture field = filter.rendered(source);
    EXPECT_EQ(channelOf(field.at(0, 11), 3), 127);
    EXPECT_EQ(channelOf(field.at(15, 11), 3), 127 * 25 / 100);

    filter.invocation.fieldFlags = 0;
    filter.dropSettings();
    EXPECT_EQ(channelOf(filter.rendered(source).at(8, 0), 3), 17) << "amount 10 without settings";
}

TEST(EdgeFeather, CountsInFieldsForExactlyOneKindOfFlag) {
    Random random(2);
    TestFrame source({.width = 40, .height = 30}, random);
    FilterUnderTest filter(edgeFeatherId);
    filter.setSettings<std::int16_t>({9});
    for (int bits = 0; bits < 0x10000; bits += 0x0080) {
        const bool halfWidth = (bits & 0x0400) != 0;
        const bool halfHeight = (bits & 0x0B00) != 0;
        filter.invocation.fieldFlags = static_cast<std::uint16_t>(bits);
        ASSERT_TRUE(
            samePicture(feathered(source.picture(), 9, halfWidth != halfHeight), filter.rendered(source)))
            << bits;
    }
}

TEST(EdgeFeather, WritesNothingOutsideTheDestination) {
    Random random(3);
    FilterUnderTest filter(edgeFeatherId);
    filter.setSettings<std::int16_t>({32767});
    TestFrame source({.width = 20, .height = 10}, random);
    for (const Geometry& geometry :
         {Geometry{.width = 7, .height = 3}, Geometry{.width = 60, .height = 33, .padding = 6},
          Geometry{.width = 0, .height = 5}, Geometry{.width = 20, .height = 10, .negativeRowBytes = true}}) {
        TestFrame destination(geometry);
        filter.render(source, destination);
        EXPECT_TRUE(destination.outerGuardsHold()) << geometry;
    }
}

TEST(EdgeFeatherKernels, EverySetEqualsThePlainVersion) {
    Random random(4);
    for (const auto set : runnableInstructionSets()) {
        const EdgeFeatherKernels& kernels = edgeFeatherKernelsTables.at(set);
        for (int width = 0; width < 150; ++width) {
            TestFrame frame({.width = width, .height = 2}, random);
            Picture expected = frame.picture();
            std::vector<std::uint8_t> factors(static_cast<std::size_t>(width));
            for (auto& factor : factors) factor = static_cast<std::uint8_t>(random() % 101);
            const int factor = width % 101;
            for (int x = 0; x < width; ++x) {
                scaleAlpha(expected, x, 0, factor);
                scaleAlpha(expected, x, 1, factors[static_cast<std::size_t>(x)]);
            }
            kernels.scaleAlpha(frame.row(0), width, factor);
            kernels.scaleAlphaByColumn(frame.row(1), width, factors.data());
            ASSERT_TRUE(samePicture(expected, frame.picture())) << instructionSetName(set);
            ASSERT_TRUE(frame.guardsHold());
        }
    }
}

}  // namespace
