// SPDX-License-Identifier: MIT
#include "tests/host/reference_copy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

constexpr int minimum = std::numeric_limits<std::int32_t>::min();
constexpr int maximum = std::numeric_limits<std::int32_t>::max();

constexpr std::size_t memorySize = 1 << 17;

int between(std::mt19937& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

/// A coordinate some pixels away, within what a coordinate can be.
std::int32_t moved(std::int32_t coordinate, int by) {
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(std::int64_t{coordinate} + by, minimum, maximum));
}

/// A frame of random size and layout in the middle of its memory.
std::unique_ptr<TestBuffer> randomBuffer(Memory& memory, std::mt19937& random, std::uint32_t format) {
    const int width = between(random, 1, 40);
    const int height = between(random, 1, 30);
    const int left = between(random, -9, 9);
    const int top = between(random, -9, 9);
    const int step = width * PixKit::bytesPerPixel(format) + between(random, 0, 2) * 12;
    const auto middle = memorySize / 2 + static_cast<std::size_t>(between(random, 0, 15));
    const FrameRect bounds{left, top, left + width, top + height};
    return std::make_unique<TestBuffer>(memory, middle, bounds, random() % 3 == 0 ? -step : step, format);
}

/// Mostly rectangles about the bounds, some inverted, some of one pixel's width, some beyond reason.
FrameRect randomRect(const FrameRect& bounds, std::mt19937& random) {
    switch (random() % 8) {
        case 0: return bounds;
        case 1: return {bounds.left + 2, bounds.top - 3, bounds.left + 3, bounds.bottom + 5};
        case 2: return {bounds.left - 4, bounds.top + 1, bounds.right + 1, bounds.top + 2};
        case 3: return {minimum, bounds.top, between(random, 0, maximum), bounds.bottom};
        case 4: return {minimum, minimum + between(random, 0, 9), maximum, maximum};
        default: {
            const int left = bounds.left + between(random, -6, 12);
            const int top = bounds.top + between(random, -6, 12);
            return {left, top, left + between(random, -1, 44), top + between(random, -1, 34)};
        }
    }
}

std::uint32_t randomMode(std::mt19937& random) {
    constexpr std::uint32_t modes[] = {0, 0x4000, 0x80BB, 0x8044, 0x8000, 0x80FF, 0x3FFF};
    return modes[random() % std::size(modes)];
}

void expectCopies(TestBuffer& source, TestBuffer& destination, const FrameRect& from, const FrameRect& to,
                  std::uint32_t mode, Memory& sourceMemory, Memory& destinationMemory) {
    const Memory sourceBefore = sourceMemory;
    Memory expected = destinationMemory;
    referenceCopy(source, destination, from, to, mode, sourceBefore, expected);
    vpixCopy(source.handle(), destination.handle(), &from, &to, mode);
    ASSERT_EQ(expected == destinationMemory, true)
        << "from " << from << " of " << source.bounds() << " to " << to << " of " << destination.bounds()
        << ", row bytes " << source.handle()->rowBytes << " and " << destination.handle()->rowBytes
        << ", mode " << mode << ", pixels of " << source.pixelBytes() << " bytes";
}

TEST(VpixCopy, RandomGeometryMatchesTheExactDefinition) {
    std::mt19937 random(1);
    Memory sourceMemory = noise(memorySize, random);
    Memory destinationMemory = noise(memorySize, random);
    for (const std::uint32_t format : {PixKit::formatBgra, PixKit::formatCode("Bgra")}) {
        for (int round = 0; round < 3000; ++round) {
            const auto source = randomBuffer(sourceMemory, random, format);
            const auto destination = randomBuffer(destinationMemory, random, format);
            expectCopies(*source, *destination, randomRect(source->bounds(), random),
                         randomRect(destination->bounds(), random), randomMode(random), sourceMemory,
                         destinationMemory);
            if (HasFatalFailure()) return;
        }
    }
}

/// Sizes beyond what the kernels take at a time, for each way in which they scale.
TEST(VpixCopy, LongLinesMatchTheExactDefinition) {
    struct Case {
        int fromWidth, fromHeight, toWidth, toHeight;
    };
    const Case cases[] = {
        {2200, 2, 2200, 2},                                                            // pixel for pixel
        {900, 1, 1300, 1},  {1, 700, 1, 1024},    {1299, 3, 1300, 3}, {2, 1, 733, 1},  // lines that grow
        {5000, 1, 8193, 1}, {1, 37, 1, 8191},  // about the longest unit
        {2200, 6, 1100, 3}, {2100, 9, 700, 3},    {1920, 32, 120, 2}, {900, 3, 900, 1},  // whole boxes
        {1300, 5, 1299, 4}, {2200, 40, 13, 3},    {6000, 2, 5, 1},                       // cut pixels
        {300, 3, 1111, 8},  {40000, 1, 30000, 1},
    };
    std::mt19937 random(6);
    Memory sourceMemory = noise(1 << 19, random);
    Memory destinationMemory = noise(1 << 19, random);
    for (const Case& each : cases) {
        for (const std::uint32_t mode : {0U, 0x80BBU}) {
            const std::int32_t sourceStep = 4 * each.fromWidth + between(random, 0, 2) * 4;
            const std::int32_t destinationStep = 4 * each.toWidth + between(random, 0, 2) * 4;
            const FrameRect from{0, 0, each.fromWidth, each.fromHeight};
            const FrameRect to{0, 0, each.toWidth, each.toHeight};
            TestBuffer source(sourceMemory, 5, from, sourceStep);
            TestBuffer destination(destinationMemory, 3, to, destinationStep);
            expectCopies(source, destination, from, to, mode, sourceMemory, destinationMemory);
            const FrameRect cutFrom{-3, 0, each.fromWidth + 2, each.fromHeight};
            const FrameRect cutTo{-2, 0, each.toWidth + 9, each.toHeight};
            expectCopies(source, destination, cutFrom, cutTo, mode, sourceMemory, destinationMemory);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(VpixCopy, EveryBlendOfTwoBytesIsRoundedExactly) {
    constexpr int size = 256;
    const FrameRect bounds{0, 0, size / 4, size};
    Memory sources(size * size);
    Memory destinations(size * size);
    for (std::size_t i = 0; i < sources.size(); ++i) sources[i] = static_cast<std::uint8_t>(i / size);
    TestBuffer source(sources, 0, bounds, size);
    TestBuffer destination(destinations, 0, bounds, size);
    for (std::uint32_t weight = 0; weight < 256; ++weight) {
        for (std::size_t i = 0; i < destinations.size(); ++i)
            destinations[i] = static_cast<std::uint8_t>(i % size);
        vpixCopy(source.handle(), destination.handle(), &bounds, &bounds, 0x8000 | weight);
        for (std::uint32_t i = 0; i < destinations.size(); ++i) {
            const std::uint32_t expected = (i / size * weight + i % size * (255 - weight) + 127) / 255;
            ASSERT_EQ(destinations[i], expected) << i / size << " over " << i % size << ", weight " << weight;
        }
    }
}

/// Every rounding of a whole line: all weights that a length has meet both small and large differences.
TEST(VpixCopy, GrowingLinesRoundHalfUpAtEveryLength) {
    std::mt19937 random(7);
    Memory sourceMemory = noise(1 << 15, random);
    Memory destinationMemory = noise(1 << 15, random);
    for (int length = 2; length < 400; ++length) {
        const FrameRect from{0, 0, between(random, 1, length - 1), 1};
        const FrameRect to{0, 0, length, 1};
        TestBuffer source(sourceMemory, 0, from, 4 * from.right);
        TestBuffer destination(destinationMemory, 0, to, 4 * length);
        expectCopies(source, destination, from, to, 0, sourceMemory, destinationMemory);
        if (HasFatalFailure()) return;
    }
}

TEST(VpixCopy, OverlapBehavesAsIfTheSourceHadBeenCopiedAside) {
    std::mt19937 random(2);
    Memory memory = noise(memorySize, random);
    for (int round = 0; round < 3000; ++round) {
        const auto source = randomBuffer(memory, random, PixKit::formatBgra);
        const auto other = randomBuffer(memory, random, PixKit::formatBgra);
        TestBuffer& destination = round % 4 == 0 ? *other : *source;
        const FrameRect from = randomRect(source->bounds(), random);
        FrameRect to = randomRect(destination.bounds(), random);
        if (round % 4 == 1) {
            const int across = between(random, -3, 3);
            const int down = between(random, -3, 3);
            to = {moved(from.left, across), moved(from.top, down), moved(from.right, across),
                  moved(from.bottom, down)};
        }
        expectCopies(*source, destination, from, to, randomMode(random), memory, memory);
        if (HasFatalFailure()) return;
    }
}

TEST(VpixCopy, RowsThatShareBytesAreCopiedAside) {
    std::mt19937 random(3);
    Memory memory = noise(memorySize, random);
    for (const std::int32_t rowBytes : {0, 4, -4, 12}) {
        TestBuffer source(memory, memorySize / 2, {0, 0, 7, 5}, rowBytes);
        TestBuffer destination(memory, memorySize / 2 + 16, {0, 0, 9, 1}, 36);
        expectCopies(source, destination, {0, 2, 7, 3}, {1, 0, 8, 1}, 0, memory, memory);
        expectCopies(source, destination, {0, 0, 7, 5}, {0, 0, 9, 1}, 0, memory, memory);
        if (HasFatalFailure()) return;
    }
}

TEST(VpixCopy, FloatPixelsScaleInTheirOwnRange) {
    std::mt19937 random(4);
    Memory sourceMemory(memorySize);
    Memory destinationMemory(memorySize);
    const auto fill = [&](Memory& memory) {
        for (std::size_t i = 0; i < memorySize; i += 4) {
            const float value = std::uniform_real_distribution<float>(-1, 2)(random);
            std::memcpy(memory.data() + i, &value, 4);
        }
    };
    fill(sourceMemory);
    fill(destinationMemory);
    for (int round = 0; round < 1000; ++round) {
        const FrameRect bounds{0, 0, between(random, 1, 20), between(random, 1, 20)};
        const FrameRect target{0, 0, between(random, 1, 20), between(random, 1, 20)};
        TestBuffer source(sourceMemory, 64, bounds, 400, PixKit::formatCode("BGra"));
        TestBuffer destination(destinationMemory, 64, target, 480, PixKit::formatCode("VUya"));
        const FrameRect from = randomRect(bounds, random);
        const FrameRect to = randomRect(target, random);
        const std::uint32_t mode = randomMode(random);
        Memory expected = destinationMemory;
        referenceCopy(source, destination, from, to, mode, sourceMemory, expected);
        vpixCopy(source.handle(), destination.handle(), &from, &to, mode);
        for (std::size_t i = 0; i < memorySize; i += 4) {
            float wanted = 0;
            float got = 0;
            std::memcpy(&wanted, expected.data() + i, 4);
            std::memcpy(&got, destinationMemory.data() + i, 4);
            ASSERT_NEAR(got, wanted, 1e-6) << "from " << from << " to " << to << ", mode " << mode;
        }
    }
}

TEST(VpixCopy, FullWeightReplacesWhatIsNotANumber) {
    Memory memory(64);
    const float source[4] = {0.25F, -1, 2, 1};
    const float nothing[4] = {NAN, INFINITY, NAN, -INFINITY};
    std::memcpy(memory.data(), source, 16);
    std::memcpy(memory.data() + 16, nothing, 16);
    const FrameRect pixel{0, 0, 1, 1};
    TestBuffer from(memory, 0, pixel, 16, PixKit::formatCode("BGra"));
    TestBuffer to(memory, 16, {0, 0, 2, 1}, 32, PixKit::formatCode("BGra"));
    const FrameRect both{0, 0, 2, 1};
    vpixCopy(from.handle(), to.handle(), &pixel, &both, 0);
    EXPECT_EQ(std::memcmp(memory.data() + 16, source, 16), 0);
    EXPECT_EQ(std::memcmp(memory.data() + 32, source, 16), 0);
}

TEST(VpixCopy, FloatPixelsOfEqualRectanglesKeepEveryBit) {
    constexpr std::uint32_t signalling[8] = {0x7FA00001, 0xFF800001, 0x00000001, 0x80000000,
                                             0x7FC12345, 0x7F800000, 0x7FBFFFFF, 0x807FFFFF};
    constexpr std::size_t size = sizeof signalling;
    Memory memory(256);
    std::memcpy(memory.data(), signalling, size);
    const FrameRect bounds{0, 0, 2, 1};
    TestBuffer from(memory, 0, bounds, 32, PixKit::formatCode("BGra"));
    // Rows of another step, so that the block cannot move as one.
    TestBuffer to(memory, 128, bounds, 48, PixKit::formatCode("BGra"));
    vpixCopy(from.handle(), to.handle(), &bounds, &bounds, 0);
    EXPECT_EQ(std::memcmp(memory.data() + 128, signalling, size), 0);
}

TEST(VpixCopy, PixelsOfDifferentWidthAreLeftAlone) {
    std::mt19937 random(5);
    Memory memory = noise(4096, random);
    const Memory before = memory;
    const FrameRect bounds{0, 0, 4, 4};
    TestBuffer bytes(memory, 0, bounds, 64);
    TestBuffer words(memory, 2048, bounds, 64, PixKit::formatCode("Bgra"));
    vpixCopy(bytes.handle(), words.handle(), &bounds, &bounds, 0);
    vpixCopy(words.handle(), bytes.handle(), &bounds, &bounds, 0);
    EXPECT_EQ(memory, before);
}

}  // namespace
