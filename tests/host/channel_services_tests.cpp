// SPDX-License-Identifier: MIT
#include "host/fxkit/channel_services.h"
#include "tests/host/short_memory.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_frame.h"

#include <algorithm>
#include <limits>

namespace {

using Bytes = std::vector<std::uint8_t>;

/// Holds a service in every set, from frame to frame and in place, against what it has to make.
void expectSame(TestFrame& source, const Picture& expected,
                const std::function<void(const ChannelKernels&, TestFrame& from, TestFrame& to)>& service) {
    const Picture before = source.picture();
    for (const auto set : runnableInstructionSets()) {
        TestFrame original(source.geometry(), before), result(source.geometry());
        service(channelKernelsTables.at(set), original, result);
        EXPECT_TRUE(samePicture(before, original.picture()));
        EXPECT_TRUE(samePicture(expected, result.picture())) << instructionSetName(set);
        EXPECT_TRUE(result.guardsHold());
        service(channelKernelsTables.at(set), original, original);
        EXPECT_TRUE(samePicture(expected, original.picture())) << instructionSetName(set) << " in place";
        EXPECT_TRUE(original.guardsHold());
    }
}

TEST(ApplyChannelTables, MapsEachChannelThroughItsTable) {
    Random random(1);
    Bytes tables(3 * 256);
    for (std::uint8_t& value : tables) value = static_cast<std::uint8_t>(random());
    const std::uint8_t* const blueGreenRed[3] = {tables.data(), tables.data() + 256, tables.data() + 512};
    for (int width = 1; width <= 70; ++width) {
        TestFrame source(
            {.width = width, .height = 5, .padding = width % 3 * 4, .negativeRowBytes = width % 2 == 0},
            random);
        Picture expected = source.picture();
        for (std::uint32_t& pixel : expected.pixels) {
            const auto mapped = [&](int channel) { return blueGreenRed[channel][channelOf(pixel, channel)]; };
            pixel = pixelOf(mapped(0), mapped(1), mapped(2), channelOf(pixel, 3));
        }
        expectSame(source, expected, [&](const ChannelKernels& kernels, TestFrame& from, TestFrame& to) {
            kernels.applyTables(from.row(0), to.row(0), to.handle()->rowBytes, width, 5, blueGreenRed);
        });
    }
}

TEST(ApplyChannelTables, TakesTheTablesInTheOrderOfTheirNames) {
    Bytes red(256, 1);
    Bytes green(256, 2);
    Bytes blue(256, 3);
    const std::uint8_t source[8] = {10, 20, 30, 40, 50, 60, 70, 80};
    Bytes result(8);
    FxKit::applyChannelTables(source, result.data(), 8, 2, 1, red.data(), green.data(), blue.data());
    EXPECT_EQ(result, (Bytes{3, 2, 1, 40, 3, 2, 1, 80}));
    FxKit::applyChannelTables(nullptr, nullptr, 8, 0, 1, red.data(), green.data(), blue.data());
    FxKit::applyChannelTables(nullptr, nullptr, 8, 2, 0, red.data(), green.data(), blue.data());
}

TEST(ApplyChannelTables, LeavesInvertedRectanglesAlone) {
    const Bytes table(256, 7);
    const Bytes source(64, 1);
    Bytes result(64, 2);
    for (const std::int32_t width : {-1, -3, -100, std::numeric_limits<std::int32_t>::min()}) {
        FxKit::applyChannelTables(source.data(), result.data(), 16, width, 2, table.data(), table.data(),
                                  table.data());
        FxKit::applyChannelTables(source.data(), result.data(), 16, 2, width, table.data(), table.data(),
                                  table.data());
    }
    EXPECT_EQ(result, Bytes(64, 2));
}

Picture plainlyConvolved(const Picture& source, const std::int16_t record[11]) {
    Picture result{source.width, source.height};
    const std::int64_t scale = record[10] == 0 ? 1 : record[10];
    for (int y = 0; y < source.height; ++y) {
        for (int x = 0; x < source.width; ++x) {
            int channels[4];
            for (int channel = 0; channel < 4; ++channel) {
                std::int64_t sum = 0;
                for (int i = 0; i < 9; ++i) {
                    sum += record[i] * channelOf(source.at(std::clamp(x + i % 3 - 1, 0, source.width - 1),
                                                           std::clamp(y + 1 - i / 3, 0, source.height - 1)),
                                                 channel);
                }
                channels[channel] =
                    static_cast<int>(std::clamp<std::int64_t>(sum / scale + record[9], 0, 255));
            }
            result.at(x, y) = pixelOf(channels[0], channels[1], channels[2], channels[3]);
        }
    }
    return result;
}

void expectConvolved(TestFrame source, const std::int16_t record[11]) {
    SCOPED_TRACE(testing::PrintToString(std::vector<int>(record, record + 11)));
    const Geometry& geometry = source.geometry();
    expectSame(source, plainlyConvolved(source.picture(), record),
               [&](const ChannelKernels& kernels, TestFrame& from, TestFrame& to) {
                   FxKit::convolve3x3(kernels, from.row(0), to.row(0), record, to.handle()->rowBytes,
                                      geometry.width, geometry.height);
               });
}

TEST(Convolve3x3, EqualsThePlainVersionForRandomKernels) {
    Random random(2);
    const auto within = [&](int limit) {
        return static_cast<std::int16_t>(std::uniform_int_distribution(-limit, limit)(random));
    };
    for (const int weights : {1, 5, 30, 63, 64, 65, 128, 1000, 32767}) {
        for (const int scale : {1, 6, 40, 300, 32767}) {
            for (const int offset : {0, 100, 32767}) {
                std::int16_t record[11];
                std::generate_n(record, 9, [&] { return within(weights); });
                record[9] = within(offset);
                record[10] = within(scale);
                const int width = 1 + static_cast<int>(random() % 70);
                const int height = 1 + static_cast<int>(random() % 5);
                expectConvolved(TestFrame({.width = width,
                                           .height = height,
                                           .padding = 8 * (scale % 2),
                                           .negativeRowBytes = offset == 0},
                                          random),
                                record);
            }
        }
    }
}

TEST(Convolve3x3, KeepsExtremesExact) {
    constexpr std::int16_t least = std::numeric_limits<std::int16_t>::min();
    constexpr std::int16_t most = std::numeric_limits<std::int16_t>::max();
    const std::int16_t records[][11] = {
        {0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0},             // A scale of 0 counts as 1.
        {1, 2, 3, 4, 5, 6, 7, 8, 9, 0, 45},            // No symmetry: which row and column is which.
        {64, 64, 64, 64, 64, 64, 64, 64, 64, 0, 576},  // The largest pairs that fit,
        {-64, -64, -64, -64, -64, -64, -64, -64, -128, most, 1},
        {127, 1, 127, 1, 127, 1, 127, 1, 127, -32000, 1},
        {0, 0, 0, 0, 128, 0, 0, 0, 0, 0, 128},  // and the smallest that do not.
        {64, 65, 0, 0, 0, 0, 0, 0, 0, 0, 129},
        {127, 1, 127, 1, 127, 1, 127, 1, 127, -32001, 1},
        {127, 1, 127, 1, 127, 1, 127, 1, 127, least, 1},
        {least, least, least, least, least, least, least, least, least, most, least},
        {most, most, most, most, most, most, most, most, most, least, 1},
        {most, least, most, least, most, least, most, least, most, 128, -3},
    };
    Random random(3);
    for (const auto& record : records) {
        for (const int width : {1, 2, 3, 16, 17, 33}) {
            for (const int height : {1, 2, 7})
                expectConvolved(TestFrame({.width = width, .height = height, .padding = 4}, random), record);
        }
    }
}

TEST(Convolve3x3, CopiesWithoutMemory) {
    const std::int16_t record[11] = {1, 1, 1, 1, 1, 1, 1, 1, 1, 0, 9};
    Random random(4);
    const Geometry geometry{.width = 30, .height = 5, .padding = 8, .negativeRowBytes = true};
    TestFrame source(geometry, random), result(geometry);
    {
        const ShortMemory shortage;
        FxKit::convolve3x3(channelKernelsTables.chosen(), source.row(0), result.row(0), record,
                           source.handle()->rowBytes, 30, 5);
    }
    EXPECT_TRUE(samePicture(source.picture(), result.picture()));
    EXPECT_TRUE(result.guardsHold());
}

// Quotients come from a product with a reciprocal, which must never cross a whole number.
TEST(Convolve3x3, DividesEverySumExactly) {
    std::vector<int> scales = {1000, 1021, 4095, 4096, 4097, 16381, 32767, -1, -2, -6, -7, -255, -32768};
    for (int scale = 1; scale <= 300; ++scale) scales.push_back(scale);
    constexpr int mostSum = 2 * 127 * 255;
    for (const int scale : scales) {
        // Sums from `begin` on whose quotients, with the offset, go through 0 to 255.
        const int step = 255 * std::abs(scale);
        for (int begin = -mostSum; begin <= mostSum; begin += step) {
            const int offset = (scale > 0 ? 0 : 255) - begin / scale;
            if (std::abs(offset) > 32000) continue;
            const int count = std::min(begin + step, mostSum) - begin + 1;
            // The middle column makes each sum from 127 times one byte, 127 times another and a third.
            const int sign = begin < 0 ? -1 : 1;
            const Convolution convolution = {{{0, static_cast<std::int16_t>(127 * sign), 0},
                                              {0, static_cast<std::int16_t>(127 * sign), 0},
                                              {0, static_cast<std::int16_t>(sign), 0}},
                                             offset,
                                             scale};
            Bytes rows[3];
            for (Bytes& row : rows) row.resize(count + 8 + 64);
            Bytes expected(count);
            for (int i = 0; i < count; ++i) {
                const int size = std::clamp((begin + i) * sign, 0, mostSum);
                const int first = std::min(size / 127, 255);
                const int second = std::min((size - 127 * first) / 127, 255);
                rows[0][i + 4] = static_cast<std::uint8_t>(first);
                rows[1][i + 4] = static_cast<std::uint8_t>(second);
                rows[2][i + 4] = static_cast<std::uint8_t>(size - 127 * (first + second));
                expected[i] = static_cast<std::uint8_t>(std::clamp(size * sign / scale + offset, 0, 255));
            }
            ASSERT_TRUE(fitsSmall(convolution));
            const std::uint8_t* const pointers[3] = {rows[0].data(), rows[1].data(), rows[2].data()};
            for (const auto set : runnableInstructionSets()) {
                Bytes result(count);
                channelKernelsTables.at(set).convolveSmall(pointers, result.data(), count, convolution);
                ASSERT_EQ(result, expected) << "scale " << scale << " from " << begin;
            }
        }
    }
}

}  // namespace
