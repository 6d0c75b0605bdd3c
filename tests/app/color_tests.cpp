// SPDX-License-Identifier: MIT
// Colour conversion: every instruction set gives the same bytes, and known colours are what they should be.
#include "app/media/color_coding.h"
#include "app/media/frame_to_picture.h"
#include "app/media/picture_to_frame.h"

#include "tests/support/instruction_sets.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

namespace vireo {
namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;

template <class Value>
std::vector<Value> noise(std::int64_t count, int depth, std::mt19937& random) {
    std::vector<Value> values(static_cast<std::size_t>(count));
    for (Value& value : values) value = static_cast<Value>(random() >> (32 - depth));
    return values;
}

/// With room behind it, which nothing may be written to.
template <class Value>
std::vector<Value> emptyRow(std::int64_t count) {
    return std::vector<Value>(static_cast<std::size_t>(count) + 3, 77);
}

/// What `write(width, sum)` hands to `sum` at every width up to some vectors', by FNV-1a.
template <class Write>
std::uint64_t checksum(Write&& write) {
    std::uint64_t sum = 0xCBF29CE484222325;
    const auto add = [&sum](const auto& row) {
        for (std::size_t i = row.size() - 3; i < row.size(); ++i)
            EXPECT_EQ(row[i], 77) << "written past the row";
        for (const auto value : row) sum = (sum ^ value) * 0x100000001B3;
    };
    for (std::int64_t width = 0; width <= 70; ++width) write(width, add);
    write(std::int64_t{333}, add);
    return sum;
}

template <class Sample, class Channel, class Unpack>
std::uint64_t unpacked(int depth, Unpack&& unpack) {
    std::mt19937 random(11);
    const YuvToRgb by = yuvToRgb({AVCOL_SPC_BT709, false}, depth, 0, 8 * sizeof(Channel));
    return checksum([&](std::int64_t width, auto& add) {
        const auto y = noise<Sample>(width, depth, random), u = noise<Sample>(width, depth, random),
                   v = noise<Sample>(width, depth, random), a = noise<Sample>(width, depth, random);
        for (const Sample* alpha : {a.data(), static_cast<const Sample*>(nullptr)}) {
            auto bgra = emptyRow<Channel>(4 * width);
            unpack(YuvRow<Sample>{y.data(), u.data(), v.data(), alpha}, bgra.data(), width, by);
            add(bgra);
        }
    });
}

template <class Channel, class Sample>
std::uint64_t packed(const PackKernels<Channel, Sample>& pack, int depth) {
    std::mt19937 random(12);
    const RgbToYuv by = rgbToYuv({AVCOL_SPC_SMPTE170M, true}, 8 * sizeof(Channel), depth);
    return checksum([&](std::int64_t width, auto& add) {
        const auto above = noise<Channel>(4 * width, 8 * sizeof(Channel), random),
                   below = noise<Channel>(4 * width, 8 * sizeof(Channel), random);
        auto y = emptyRow<Sample>(width), a = y, u = y, v = y;
        auto halfU = emptyRow<Sample>((width + 1) / 2), halfV = halfU;
        pack.luma(above.data(), y.data(), width, by);
        pack.alpha(above.data(), a.data(), width, by);
        pack.chroma(above.data(), below.data(), u.data(), v.data(), width, by);
        pack.halfChroma(above.data(), below.data(), halfU.data(), halfV.data(), width, by);
        for (const auto& row : {y, a, u, v, halfU, halfV}) add(row);
    });
}

template <class Sample>
std::uint64_t repeated(void (*repeat)(const Sample*, Sample*, std::int64_t)) {
    std::mt19937 random(13);
    return checksum([&](std::int64_t width, auto& add) {
        auto full = emptyRow<Sample>(width);
        repeat(noise<Sample>(width / 2 + 1, 8 * sizeof(Sample), random).data(), full.data(), width);
        add(full);
    });
}

TEST(ColorKernels, EverySetGivesTheSameBytes) {
    for (const auto set : runnableInstructionSets()) {
        SCOPED_TRACE(static_cast<int>(set));
        const ColorKernels& kernels = colorKernelsTables.at(set);
        const auto unpack16 = [&](const auto& row, U8* bgra, std::int64_t width, const YuvToRgb& by) {
            const std::vector<float> dither(8, 0.5F);
            kernels.unpack16(row, bgra, width, by, dither.data());
        };
        EXPECT_EQ((unpacked<U8, U8>(8, kernels.unpack8)), 0xC66F8A2B2FB5361C);
        EXPECT_EQ((unpacked<U16, U16>(10, kernels.unpackDeep)), 0x7B5D26962165AFAA);
        EXPECT_EQ((unpacked<U16, U16>(12, kernels.unpackDeep)), 0x9D246B382128B778);
        EXPECT_EQ((unpacked<U16, U16>(16, kernels.unpackDeep)), 0x430C8FD2EEA6F786);
        EXPECT_EQ((unpacked<U16, U8>(10, unpack16)), 0x8CE75B30C8B2C10D);
        EXPECT_EQ((unpacked<U16, U8>(12, unpack16)), 0xE4082FDF8F40E4D6);
        EXPECT_EQ((unpacked<U16, U8>(16, unpack16)), 0xA0FB22FAF9FA5902);
        EXPECT_EQ(packed(kernels.pack8, 8), 0x73327D9151DF5595);
        EXPECT_EQ(packed(kernels.pack16, 8), 0xDB451D0117E07766);
        EXPECT_EQ(packed(kernels.pack8Deep, 10), 0x38F76BE9ADE06C70);
        EXPECT_EQ(packed(kernels.pack16Deep, 10), 0xA918D2ECE3EC48ED);
        EXPECT_EQ(packed(kernels.pack8Deep, 16), 0x3E3C7F16593BA707);
        EXPECT_EQ(packed(kernels.pack16Deep, 16), 0x3D70D6912F94A2C1);
        EXPECT_EQ(repeated(kernels.repeat8), 0x9AE60B4F926819AF);
        EXPECT_EQ(repeated(kernels.repeat16), 0x1E8F7B01DD06F701);
    }
}

TEST(ColorKernels, HalvedChromaIsThatOfBothColumns) {
    std::mt19937 random(14);
    for (const auto set : runnableInstructionSets()) {
        const ColorKernels& kernels = colorKernelsTables.at(set);
        for (std::int64_t width = 1; width <= 70; ++width) {
            const auto y = noise<U16>(width, 10, random), a = noise<U16>(width, 10, random);
            const auto halfU = noise<U16>((width + 1) / 2, 10, random),
                       halfV = noise<U16>((width + 1) / 2, 10, random);
            auto u = y, v = y;
            kernels.repeat16(halfU.data(), u.data(), width);
            kernels.repeat16(halfV.data(), v.data(), width);
            const YuvToRgb by = yuvToRgb({AVCOL_SPC_BT709, false}, 10, 0, 16);
            auto halved = emptyRow<U16>(4 * width), full = halved;
            kernels.unpackDeep({y.data(), halfU.data(), halfV.data(), a.data(), true}, halved.data(), width,
                               by);
            kernels.unpackDeep({y.data(), u.data(), v.data(), a.data()}, full.data(), width, by);
            ASSERT_EQ(halved, full) << width;
        }
    }
}

TEST(ColorKernels, MissingBitsAreSeenAnywhereInARow) {
    constexpr std::uint64_t alphas = 0xFF000000FF000000;
    for (const auto set : runnableInstructionSets()) {
        const auto hasAll = colorKernelsTables.at(set).hasAll;
        for (std::size_t bytes = 4; bytes <= 200; bytes += 4) {
            std::vector<U8> row(bytes);
            for (std::size_t i = 3; i < bytes; i += 4) row[i] = 0xFF;
            EXPECT_TRUE(hasAll(row.data(), static_cast<std::int64_t>(bytes), alphas));
            for (std::size_t i = 3; i < bytes; i += 4) {
                row[i] = 0xEF;
                EXPECT_FALSE(hasAll(row.data(), static_cast<std::int64_t>(bytes), alphas))
                    << i << " of " << bytes;
                row[i] = 0xFF;
            }
        }
    }
}

/// A channel of samples as bytes, the products and constants added one by one.
int channelOf(float luma, float first, float second, float offset) {
    return static_cast<int>(std::clamp(luma + first + second + offset + 0.5F, 0.0F, 255.0F));
}

TEST(ColorKernels, BytesAreWhatSumsOneByOneGive) {
    std::vector<U8> y(256), u(256), v(256), bgra(4 * 256);
    for (std::size_t i = 0; i < 256; ++i) y[i] = static_cast<U8>(i);
    for (const AVColorSpace matrix :
         {AVCOL_SPC_BT709, AVCOL_SPC_SMPTE170M, AVCOL_SPC_FCC, AVCOL_SPC_SMPTE240M, AVCOL_SPC_BT2020_NCL}) {
        for (const bool fullRange : {false, true}) {
            const YuvToRgb by = yuvToRgb({matrix, fullRange}, 8, 0, 8);
            std::int64_t wrong = 0;
            for (int c = 0; c < 0x10000; ++c) {
                std::fill(u.begin(), u.end(), static_cast<U8>(c >> 8));
                std::fill(v.begin(), v.end(), static_cast<U8>(c & 0xFF));
                colorKernelsTables.chosen().unpack8({y.data(), u.data(), v.data(), nullptr}, bgra.data(), 256,
                                                    by);
                const auto chromaU = static_cast<float>(c >> 8), chromaV = static_cast<float>(c & 0xFF);
                for (std::size_t i = 0; i < 256; ++i) {
                    const float luma = by.luma * static_cast<float>(i);
                    wrong += bgra[4 * i + 1] !=
                             channelOf(luma, by.greenU * chromaU, by.greenV * chromaV, by.green);
                    if (v[0] == 0) wrong += bgra[4 * i] != channelOf(luma, by.blueU * chromaU, 0, by.blue);
                    if (u[0] == 0) wrong += bgra[4 * i + 2] != channelOf(luma, by.redV * chromaV, 0, by.red);
                }
            }
            EXPECT_EQ(wrong, 0) << matrix << fullRange;
        }
    }
}

/// The channel of every pixel stands where the libraries' description says, on the way in and out.
template <class Sample>
void expectPixelsInPlace(AVPixelFormat code, std::uint32_t pictureFormat) {
    constexpr int width = 37, height = 3;
    std::mt19937 random(15);
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(code);
    FrameConverter converter(code, width, height, {});
    Picture picture(width, height, pictureFormat);
    for (int y = 0; y < height; ++y) {
        const auto row = noise<Sample>(4 * width, 8 * sizeof(Sample), random);
        std::memcpy(picture.row(y), row.data(), row.size() * sizeof(Sample));
    }
    const FramePtr frame = converter.frameOf(picture, false);
    const auto back = frameToPicture(*frame, width, height, pictureFormat, {}, false, true);
    for (int y = 0; y < height; ++y) {
        const auto* const from = reinterpret_cast<const Sample*>(picture.row(y));
        const auto* const read = reinterpret_cast<const Sample*>(back->row(y));
        for (int i = 0; i < 4 * width; ++i) {
            constexpr int componentOf[] = {2, 1, 0, 3};
            const int component = componentOf[i % 4];
            if (component == format.nb_components) {
                ASSERT_EQ(read[i], std::numeric_limits<Sample>::max());
                continue;
            }
            const AVComponentDescriptor& place = format.comp[component];
            Sample stored;
            std::memcpy(&stored, frame->data[0] + y * frame->linesize[0] + i / 4 * place.step + place.offset,
                        sizeof stored);
            ASSERT_EQ(stored, from[i]);
            ASSERT_EQ(read[i], from[i]);
        }
    }
}

TEST(PackedRgb, ChannelsStandWhereTheyBelong) {
    for (const AVPixelFormat format :
         {AV_PIX_FMT_BGRA, AV_PIX_FMT_RGBA, AV_PIX_FMT_ARGB, AV_PIX_FMT_ABGR, AV_PIX_FMT_BGR0,
          AV_PIX_FMT_RGB0, AV_PIX_FMT_0RGB, AV_PIX_FMT_0BGR, AV_PIX_FMT_BGR24, AV_PIX_FMT_RGB24}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        expectPixelsInPlace<U8>(format, PixKit::formatBgra);
    }
    for (const AVPixelFormat format :
         {AV_PIX_FMT_BGRA64, AV_PIX_FMT_RGBA64, AV_PIX_FMT_BGR48, AV_PIX_FMT_RGB48}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        expectPixelsInPlace<U16>(format, formatBgra16);
    }
}

TEST(ColorCoding, KnownColoursHaveTheirStandardValues) {
    struct Known {
        ColorCoding coding;
        U8 bgra[4];
        U8 yuv[3];
    };
    const Known cases[] = {
        {{AVCOL_SPC_SMPTE170M, false}, {0, 0, 255, 255}, {81, 90, 240}},  // red in BT.601
        {{AVCOL_SPC_BT709, false}, {0, 0, 255, 255}, {63, 102, 240}},     // red in BT.709
        {{AVCOL_SPC_BT709, false}, {255, 255, 255, 255}, {235, 128, 128}},
        {{AVCOL_SPC_SMPTE170M, true}, {255, 0, 0, 255}, {29, 255, 107}},   // blue in JPEG
        {{AVCOL_SPC_BT2020_NCL, false}, {0, 255, 0, 255}, {164, 48, 25}},  // green in BT.2020
    };
    const auto& pack = colorKernelsTables.chosen().pack8;
    for (const Known& known : cases) {
        U8 yuv[3] = {};
        const RgbToYuv by = rgbToYuv(known.coding, 8, 8);
        pack.luma(known.bgra, &yuv[0], 1, by);
        pack.chroma(known.bgra, known.bgra, &yuv[1], &yuv[2], 1, by);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(yuv[i], known.yuv[i], 1);
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
