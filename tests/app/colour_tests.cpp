// SPDX-License-Identifier: MIT
// Colour conversion: every instruction set against plain double precision, and there and back again.
#include "app/media/color_coding.h"

#include <gtest/gtest.h>
#include <cmath>
#include <random>
#include <vector>

namespace vireo {
namespace {

constexpr int depths[] = {8, 10, 12, 16};

const std::vector<std::int64_t> widths = [] {
    std::vector<std::int64_t> all;
    for (std::int64_t width = 0; width <= 70; ++width) all.push_back(width);
    all.push_back(333);
    return all;
}();

template <class Value>
std::vector<Value> noise(std::size_t count, int depth) {
    static std::mt19937 random(11);
    std::uniform_int_distribution<int> any(0, (1 << depth) - 1);
    std::vector<Value> values(count);
    for (Value& value : values) value = static_cast<Value>(any(random));
    return values;
}

double limited(double value, double highest) { return std::floor(std::min(std::max(value, 0.0), highest)); }

/// Values from sums in single precision may fall to the other side of a step, never further.
template <class Value>
void expectNear(const Value* got, double exact, const char* what, std::int64_t at) {
    ASSERT_NEAR(static_cast<double>(*got), exact, 1.0) << what << " at " << at;
}

template <class Sample, class Channel, class Unpack>
void checkUnpack(int depth, bool alpha, Unpack unpack) {
    const int channelDepth = 8 * sizeof(Channel);
    const YuvToRgb by = yuvToRgb({AVCOL_SPC_BT709, false}, depth, 0, channelDepth);
    const double white = std::ldexp(1.0, channelDepth) - 1;
    for (std::int64_t width : widths) {
        const auto count = static_cast<std::size_t>(width) + 1;
        const auto y = noise<Sample>(count, depth), u = noise<Sample>(count, depth),
                   v = noise<Sample>(count, depth), a = noise<Sample>(count, depth);
        std::vector<Channel> bgra(4 * count, 77);
        unpack(YuvRow<Sample>{y.data() + 1, u.data() + 1, v.data() + 1, alpha ? a.data() + 1 : nullptr},
               bgra.data(), width, by);
        for (std::int64_t i = 0; i < width; ++i) {
            const auto s = static_cast<std::size_t>(i) + 1;
            const double luma = double{by.luma} * y[s] + 0.5;
            const Channel* const pixel = bgra.data() + 4 * i;
            expectNear(pixel + 2, limited(luma + double{by.redV} * v[s] + by.red, white), "red", i);
            expectNear(pixel + 1,
                       limited(luma + double{by.greenU} * u[s] + double{by.greenV} * v[s] + by.green, white),
                       "green", i);
            expectNear(pixel, limited(luma + double{by.blueU} * u[s] + by.blue, white), "blue", i);
            expectNear(pixel + 3, alpha ? limited(double{by.alpha} * a[s] + 0.5, white) : white, "alpha", i);
        }
        for (std::size_t i = 4 * static_cast<std::size_t>(width); i < bgra.size(); ++i)
            ASSERT_EQ(bgra[i], 77) << "written past the row";
    }
}

template <class Channel, class Sample>
void checkPack(const PackKernels<Channel, Sample>& pack, int depth) {
    const RgbToYuv by = rgbToYuv({AVCOL_SPC_SMPTE170M, true}, 8 * sizeof(Channel), depth);
    for (std::int64_t width : widths) {
        const auto count = static_cast<std::size_t>(width) + 1;
        const auto above = noise<Channel>(4 * count, 8 * sizeof(Channel));
        const auto below = noise<Channel>(4 * count, 8 * sizeof(Channel));
        std::vector<Sample> y(count, 77), a(count, 77), u(count, 77), v(count, 77), hu(count, 77),
            hv(count, 77);
        pack.luma(above.data(), y.data(), width, by);
        pack.alpha(above.data(), a.data(), width, by);
        pack.chroma(above.data(), below.data(), u.data(), v.data(), width, by);
        pack.halfChroma(above.data(), below.data(), hu.data(), hv.data(), width, by);
        // Mean of a channel over both rows and the columns from i on.
        const auto mean = [&](std::int64_t i, std::int64_t columns, std::size_t channel) {
            double sum = 0;
            for (std::int64_t x = i; x < i + columns; ++x) {
                const std::size_t at = 4 * static_cast<std::size_t>(x) + channel;
                sum += above[at] + below[at];
            }
            return sum / static_cast<double>(2 * columns);
        };
        const auto expectChroma = [&](const Sample* gotU, const Sample* gotV, std::int64_t i,
                                      std::int64_t columns) {
            const double b = mean(i, columns, 0), g = mean(i, columns, 1), r = mean(i, columns, 2);
            expectNear(gotU, limited(by.uR * r + by.uG * g + by.uB * b + by.u, by.highest), "u", i);
            expectNear(gotV, limited(by.vR * r + by.vG * g + by.vB * b + by.v, by.highest), "v", i);
        };
        for (std::int64_t i = 0; i < width; ++i) {
            const Channel* const pixel = above.data() + 4 * i;
            expectNear(&y[static_cast<std::size_t>(i)],
                       limited(double{by.lumaR} * pixel[2] + double{by.lumaG} * pixel[1] +
                                   double{by.lumaB} * pixel[0] + by.luma,
                               by.highest),
                       "luma", i);
            expectNear(&a[static_cast<std::size_t>(i)],
                       limited(double{by.alpha} * pixel[3] + 0.5, by.highest), "alpha", i);
            expectChroma(&u[static_cast<std::size_t>(i)], &v[static_cast<std::size_t>(i)], i, 1);
        }
        for (std::int64_t i = 0; i < (width + 1) / 2; ++i) {
            expectChroma(&hu[static_cast<std::size_t>(i)], &hv[static_cast<std::size_t>(i)], 2 * i,
                         std::min<std::int64_t>(2, width - 2 * i));
        }
        for (const auto* row : {&y, &a, &u, &v}) ASSERT_EQ(row->back(), 77) << "written past the row";
    }
}

class ColourKernelTest : public testing::TestWithParam<simd::InstructionSet> {
protected:
    void SetUp() override {
        if (GetParam() > simd::processorInstructionSet()) GTEST_SKIP() << "not on this processor";
    }
    const ColourKernels& kernels() const { return colourKernelsTables.at(GetParam()); }
};

TEST_P(ColourKernelTest, UnpackRows) {
    for (bool alpha : {false, true}) {
        checkUnpack<std::uint8_t, std::uint8_t>(8, alpha, kernels().unpack8);
        for (int depth : depths) {
            if (depth == 8) continue;
            checkUnpack<std::uint16_t, std::uint16_t>(depth, alpha, kernels().unpackDeep);
            checkUnpack<std::uint16_t, std::uint8_t>(
                depth, alpha, [&](const auto& row, auto* bgra, auto width, const auto& by) {
                    const std::vector<float> dither(static_cast<std::size_t>(width), 0.5F);
                    kernels().unpack16(row, bgra, width, by, dither.data());
                });
        }
    }
}

TEST_P(ColourKernelTest, PackRows) {
    checkPack(kernels().pack8, 8);
    checkPack(kernels().pack16, 8);
    for (int depth : {10, 16}) {
        checkPack(kernels().pack8Deep, depth);
        checkPack(kernels().pack16Deep, depth);
    }
}

TEST_P(ColourKernelTest, EverySetGivesTheBaselinesBytes) {
    const std::size_t width = 333;
    const auto y = noise<std::uint8_t>(width, 8), u = noise<std::uint8_t>(width, 8),
               v = noise<std::uint8_t>(width, 8);
    const ColorCoding coding{AVCOL_SPC_BT709, false};
    std::vector<std::uint8_t> results[2];
    int which = 0;
    for (const ColourKernels* set :
         {&kernels(), &colourKernelsTables.at(simd::InstructionSet::Baseline)}) {
        std::vector<std::uint8_t>& bytes = results[which++];
        bytes.resize(4 * width + 3 * width);
        set->unpack8({y.data(), u.data(), v.data(), nullptr}, bytes.data(), width, yuvToRgb(coding, 8, 0, 8));
        const RgbToYuv back = rgbToYuv(coding, 8, 8);
        set->pack8.luma(bytes.data(), bytes.data() + 4 * width, width, back);
        set->pack8.halfChroma(bytes.data(), bytes.data(), bytes.data() + 5 * width, bytes.data() + 6 * width,
                              width, back);
    }
    EXPECT_EQ(results[0], results[1]);
}

TEST_P(ColourKernelTest, RepeatsSamples) {
    for (std::int64_t width : widths) {
        const auto half = noise<std::uint16_t>(static_cast<std::size_t>(width) / 2 + 1, 16);
        std::vector<std::uint16_t> full(static_cast<std::size_t>(width) + 1, 77);
        kernels().repeat16(half.data(), full.data(), width);
        for (std::size_t i = 0; i < static_cast<std::size_t>(width); ++i) ASSERT_EQ(full[i], half[i / 2]);
        ASSERT_EQ(full.back(), 77);
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, ColourKernelTest, testing::ValuesIn(simd::allInstructionSets));

TEST(ColorCoding, KnownColoursHaveTheirStandardValues) {
    struct Known {
        ColorCoding coding;
        std::uint8_t bgra[4];
        int y, u, v;
    };
    const Known cases[] = {
        {{AVCOL_SPC_SMPTE170M, false}, {0, 0, 255, 255}, 81, 90, 240},  // red in BT.601
        {{AVCOL_SPC_BT709, false}, {0, 0, 255, 255}, 63, 102, 240},     // red in BT.709
        {{AVCOL_SPC_BT709, false}, {255, 255, 255, 255}, 235, 128, 128},
        {{AVCOL_SPC_SMPTE170M, true}, {255, 0, 0, 255}, 29, 255, 107},   // blue in JPEG
        {{AVCOL_SPC_BT2020_NCL, false}, {0, 255, 0, 255}, 164, 48, 25},  // green in BT.2020
    };
    const auto& kernels = colourKernelsTables.chosen();
    for (const Known& known : cases) {
        std::uint8_t y = 0, u = 0, v = 0;
        const RgbToYuv by = rgbToYuv(known.coding, 8, 8);
        kernels.pack8.luma(known.bgra, &y, 1, by);
        kernels.pack8.chroma(known.bgra, known.bgra, &u, &v, 1, by);
        EXPECT_NEAR(y, known.y, 1);
        EXPECT_NEAR(u, known.u, 1);
        EXPECT_NEAR(v, known.v, 1);
    }
}

TEST(ColorCoding, UntaggedPicturesAreTakenForWhatTheyUsuallyAre) {
    const auto coding = [](AVPixelFormat format, int lines) {
        return colorCoding(AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, format, lines);
    };
    EXPECT_EQ(coding(AV_PIX_FMT_YUV420P, 576).matrix, AVCOL_SPC_SMPTE170M);
    EXPECT_EQ(coding(AV_PIX_FMT_YUV420P, 577).matrix, AVCOL_SPC_BT709);
    EXPECT_FALSE(coding(AV_PIX_FMT_YUV420P, 576).fullRange);
    EXPECT_TRUE(coding(AV_PIX_FMT_YUVJ420P, 576).fullRange);
    EXPECT_TRUE(coding(AV_PIX_FMT_GRAY8, 576).fullRange);
}

}  // namespace
}  // namespace vireo
