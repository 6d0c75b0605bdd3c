// SPDX-License-Identifier: MIT
// Colour conversion: every instruction set gives the same bytes, and known colours are what they should be.
#include "app/media/color_coding.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace vireo {
namespace {

const std::vector<std::int64_t> widths = [] {
    std::vector<std::int64_t> all;
    for (std::int64_t width = 0; width <= 70; ++width) all.push_back(width);
    all.push_back(333);
    return all;
}();

template <class Value>
std::vector<Value> noise(std::int64_t count, int depth, std::mt19937& random) {
    std::vector<Value> values(static_cast<std::size_t>(count));
    for (Value& value : values) value = static_cast<Value>(random() >> (32 - depth));
    return values;
}

/// A row of 77 with room behind it, which nothing may be written to.
template <class Value>
struct Row {
    explicit Row(std::int64_t count) : values(static_cast<std::size_t>(count) + 3, 77) {}
    Value* data() { return values.data(); }
    std::vector<Value> values;
};

/// All rows that were made, and what lies behind them, by FNV-1a.
class Checksum {
public:
    template <class Value>
    void add(const Row<Value>& row) {
        for (std::size_t i = row.values.size() - 3; i < row.values.size(); ++i)
            EXPECT_EQ(row.values[i], 77) << "written past the row";
        for (const Value value : row.values) sum_ = (sum_ ^ value) * 0x100000001B3;
    }
    std::uint64_t sum() const { return sum_; }

private:
    std::uint64_t sum_ = 0xCBF29CE484222325;
};

template <class Sample, class Channel, class Unpack>
std::uint64_t unpacked(int depth, Unpack&& unpack) {
    Checksum sum;
    std::mt19937 random(11);
    const YuvToRgb by = yuvToRgb({AVCOL_SPC_BT709, false}, depth, 0, 8 * sizeof(Channel));
    for (const std::int64_t width : widths) {
        const auto y = noise<Sample>(width, depth, random), u = noise<Sample>(width, depth, random),
                   v = noise<Sample>(width, depth, random), a = noise<Sample>(width, depth, random);
        for (const Sample* alpha : {a.data(), static_cast<const Sample*>(nullptr)}) {
            Row<Channel> bgra(4 * width);
            unpack(YuvRow<Sample>{y.data(), u.data(), v.data(), alpha}, bgra.data(), width, by);
            sum.add(bgra);
        }
    }
    return sum.sum();
}

template <class Channel, class Sample>
std::uint64_t packed(const PackKernels<Channel, Sample>& pack, int depth) {
    Checksum sum;
    std::mt19937 random(12);
    const RgbToYuv by = rgbToYuv({AVCOL_SPC_SMPTE170M, true}, 8 * sizeof(Channel), depth);
    for (const std::int64_t width : widths) {
        const auto above = noise<Channel>(4 * width, 8 * sizeof(Channel), random),
                   below = noise<Channel>(4 * width, 8 * sizeof(Channel), random);
        const std::int64_t half = (width + 1) / 2;
        Row<Sample> y(width), a(width), u(width), v(width), halfU(half), halfV(half);
        pack.luma(above.data(), y.data(), width, by);
        pack.alpha(above.data(), a.data(), width, by);
        pack.chroma(above.data(), below.data(), u.data(), v.data(), width, by);
        pack.halfChroma(above.data(), below.data(), halfU.data(), halfV.data(), width, by);
        for (const Row<Sample>& row : {y, a, u, v, halfU, halfV}) sum.add(row);
    }
    return sum.sum();
}

class ColorKernelTest : public testing::TestWithParam<simd::InstructionSet> {
protected:
    void SetUp() override {
        if (GetParam() > simd::processorInstructionSet()) GTEST_SKIP() << "not on this processor";
    }
    const ColorKernels& kernels() const { return colorKernelsTables.at(GetParam()); }
};

TEST_P(ColorKernelTest, UnpackRows) {
    EXPECT_EQ((unpacked<std::uint8_t, std::uint8_t>(8, kernels().unpack8)), 0xC66F8A2B2FB5361C);
    const std::uint64_t deep[] = {0x7B5D26962165AFAA, 0x9D246B382128B778, 0x430C8FD2EEA6F786},
                        shallow[] = {0x8CE75B30C8B2C10D, 0xE4082FDF8F40E4D6, 0xA0FB22FAF9FA5902};
    for (const int depth : {10, 12, 16}) {
        const int i = depth == 16 ? 2 : depth == 12 ? 1 : 0;
        EXPECT_EQ((unpacked<std::uint16_t, std::uint16_t>(depth, kernels().unpackDeep)), deep[i]);
        EXPECT_EQ((unpacked<std::uint16_t, std::uint8_t>(
                      depth,
                      [&](const auto& row, auto* bgra, auto width, const auto& by) {
                          const std::vector<float> dither(static_cast<std::size_t>(width), 0.5F);
                          kernels().unpack16(row, bgra, width, by, dither.data());
                      })),
                  shallow[i]);
    }
}

TEST_P(ColorKernelTest, PackRows) {
    EXPECT_EQ(packed(kernels().pack8, 8), 0x73327D9151DF5595);
    EXPECT_EQ(packed(kernels().pack16, 8), 0xDB451D0117E07766);
    EXPECT_EQ(packed(kernels().pack8Deep, 10), 0x38F76BE9ADE06C70);
    EXPECT_EQ(packed(kernels().pack16Deep, 10), 0xA918D2ECE3EC48ED);
    EXPECT_EQ(packed(kernels().pack8Deep, 16), 0x3E3C7F16593BA707);
    EXPECT_EQ(packed(kernels().pack16Deep, 16), 0x3D70D6912F94A2C1);
}

TEST_P(ColorKernelTest, RepeatsSamples) {
    std::mt19937 random(13);
    for (const std::int64_t width : widths) {
        const auto half = noise<std::uint16_t>(width / 2 + 1, 16, random);
        Row<std::uint16_t> full(width);
        kernels().repeat16(half.data(), full.data(), width);
        for (std::int64_t i = 0; i < width; ++i)
            ASSERT_EQ(full.data()[i], half[static_cast<std::size_t>(i / 2)]);
        ASSERT_EQ(full.data()[width], 77);
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, ColorKernelTest, testing::ValuesIn(simd::allInstructionSets));

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
    const auto& kernels = colorKernelsTables.chosen();
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
