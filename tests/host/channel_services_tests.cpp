// SPDX-License-Identifier: MIT
#include "host/fxkit/channel_services.h"
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
        TestFrame source({width, 5, width % 3 * 4, 0, 0, width % 2 == 0}, random);
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

TEST(ApplyChannelTables, TakesTheTablesInTheOrderOfTheirNamesAndNoEmptyRectangle) {
    const Bytes red(256, 1), green(256, 2), blue(256, 3), source{10, 20, 30, 40, 50, 60, 70, 80};
    Bytes result(8);
    const auto apply = [&](std::int32_t width, std::int32_t height) {
        FxKit::applyChannelTables(source.data(), result.data(), 8, width, height, red.data(), green.data(),
                                  blue.data());
    };
    for (const std::int32_t none : {0, -1, -100, std::numeric_limits<std::int32_t>::min()}) {
        apply(none, 1);
        apply(2, none);
    }
    EXPECT_EQ(result, Bytes(8));
    apply(2, 1);
    EXPECT_EQ(result, (Bytes{3, 2, 1, 40, 3, 2, 1, 80}));
}

Picture plainlyConvolved(const Picture& source, const std::int16_t record[11]) {
    Picture result{source.width, source.height};
    const std::int64_t scale = record[10] == 0 ? 1 : record[10];
    for (int i = 0; i < 4 * source.width * source.height; ++i) {
        const int channel = i % 4, x = i / 4 % source.width, y = i / 4 / source.width;
        std::int64_t sum = 0;
        for (int k = 0; k < 9; ++k) {
            sum += record[k] * channelOf(source.nearest(x + k % 3 - 1, y + 1 - k / 3), channel);
        }
        const std::int64_t value = std::clamp<std::int64_t>(sum / scale + record[9], 0, 255);
        result.at(x, y) |= static_cast<std::uint32_t>(value) << 8 * channel;
    }
    return result;
}

void expectConvolved(const Geometry& geometry, Random& random, const std::int16_t record[11]) {
    SCOPED_TRACE(testing::PrintToString(std::vector<int>(record, record + 11)));
    TestFrame source(geometry, random);
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
                expectConvolved({width, height, 8 * (scale % 2), 0, 0, offset == 0}, random, record);
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
            for (const int height : {1, 2, 7}) expectConvolved({width, height, 4}, random, record);
        }
    }
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
            // The middle column makes each sum from 127 times one byte, 127 times another and a third.
            const int sign = begin < 0 ? -1 : 1;
            Convolution convolution{{}, offset, scale};
            for (int row = 0; row < 3; ++row)
                convolution.weights[row][1] = static_cast<std::int16_t>((row < 2 ? 127 : 1) * sign);
            ASSERT_TRUE(fitsSmall(convolution));
            const int count = std::min(begin + step, mostSum) - begin + 1;
            Bytes rows[3] = {Bytes(count + 72), Bytes(count + 72), Bytes(count + 72)}, expected(count);
            for (int i = 0; i < count; ++i) {
                const int size = std::clamp((begin + i) * sign, 0, mostSum);
                int rest = size;
                for (const int row : {0, 1, 2}) {
                    const int weight = std::abs(convolution.weights[row][1]);
                    const int byte = std::min(rest / weight, 255);
                    rows[row][i + 4] = static_cast<std::uint8_t>(byte);
                    rest -= weight * byte;
                }
                expected[i] = static_cast<std::uint8_t>(std::clamp(size * sign / scale + offset, 0, 255));
            }
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
