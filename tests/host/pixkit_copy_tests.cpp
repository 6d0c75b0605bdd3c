// SPDX-License-Identifier: MIT
#include "host/vrm/suites.h"
#include "tests/host/test_buffer.h"
#include "tests/host/workers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace {

using Whole = __int128;

struct Weighted {
    std::int64_t coordinate;
    Whole weight;
};

struct Side {
    std::int64_t begin;
    std::int64_t end;

    std::int64_t size() const { return end - begin; }
};

/// The source pixels that make up a destination pixel, along one axis: shares of a box where the picture
/// shrinks, a tent about the pixel's centre where it grows.
std::vector<Weighted> weightsOf(Side source, Side existing, Side destination, std::int64_t position) {
    const Whole from = source.size(), to = destination.size(), index = position - destination.begin;
    // Pixels farther away have no weight, and need no look.
    const auto near = static_cast<std::int64_t>(index * from / to);
    const std::int64_t reach = source.size() / destination.size() + 3;
    // One pixel more than there is at either end, repeating the end.
    const std::int64_t first = std::max({near - reach, existing.begin - source.begin - 1, std::int64_t{-1}});
    const std::int64_t last = std::min({near + reach, existing.end - source.begin, source.size()});
    std::vector<Weighted> weights;
    bool covered = false;
    for (std::int64_t x = first; x <= last; ++x) {
        const std::int64_t coordinate = std::clamp(source.begin + x, source.begin, source.end - 1);
        if (coordinate < existing.begin || coordinate >= existing.end) continue;
        const Whole share = std::min((x + 1) * to, (index + 1) * from) - std::max(x * to, index * from);
        const Whole apart = (2 * x + 1) * to - (2 * index + 1) * from;
        const Whole weight = from < to ? 2 * to - (apart < 0 ? -apart : apart) : share;
        if (weight > 0) weights.push_back({coordinate, weight});
        covered |= share > 0;
    }
    return covered ? weights : std::vector<Weighted>{};
}

template <class Sample>
Sample sampleAt(const Memory& memory, std::size_t offset) {
    Sample sample;
    std::memcpy(&sample, memory.data() + offset, sizeof sample);
    return sample;
}

template <class Sample>
void copySamples(const TestBuffer& source, const TestBuffer& destination, const FrameRect& from,
                 const FrameRect& to, std::uint32_t mode, const Memory& before, Memory& after) {
    constexpr bool isWhole = std::is_integral_v<Sample>;
    using Sum = std::conditional_t<isWhole, Whole, long double>;
    const FrameRect& have = source.bounds();
    const FrameRect& want = destination.bounds();
    for (std::int64_t y = std::max(to.top, want.top); y < std::min(to.bottom, want.bottom); ++y) {
        const auto down = weightsOf({from.top, from.bottom}, {have.top, have.bottom}, {to.top, to.bottom}, y);
        for (std::int64_t x = std::max(to.left, want.left); x < std::min(to.right, want.right); ++x) {
            const auto across =
                weightsOf({from.left, from.right}, {have.left, have.right}, {to.left, to.right}, x);
            if (down.empty() || across.empty()) continue;
            for (std::size_t channel = 0; channel < 4 * sizeof(Sample); channel += sizeof(Sample)) {
                Sum sum = 0, total = 0;
                for (const Weighted& row : down) {
                    for (const Weighted& column : across) {
                        const Sum weight = static_cast<Sum>(row.weight) * static_cast<Sum>(column.weight);
                        const std::size_t offset = source.offset(column.coordinate, row.coordinate);
                        sum += weight * static_cast<Sum>(sampleAt<Sample>(before, offset + channel));
                        total += weight;
                    }
                }
                const std::size_t offset = destination.offset(x, y) + channel;
                auto value = static_cast<Sample>(isWhole ? (2 * sum + total) / (2 * total) : sum / total);
                if ((mode & 0x8000) != 0) {
                    const Sum weight = mode & 0xFF, old = sampleAt<Sample>(after, offset);
                    value = static_cast<Sample>(
                        (value * weight + old * (255 - weight) + (isWhole ? 127 : 0)) / 255);
                }
                std::memcpy(after.data() + offset, &value, sizeof value);
            }
        }
    }
}

/// What vpixCopy makes, pixel by pixel from the definition: reads `before`, writes `after`.
void referenceCopy(const TestBuffer& source, const TestBuffer& destination, const FrameRect& from,
                   const FrameRect& to, std::uint32_t mode, const Memory& before, Memory& after) {
    if (from.right <= from.left || from.bottom <= from.top) return;
    const auto copy = source.pixelBytes() == 16  ? copySamples<float>
                      : source.pixelBytes() == 8 ? copySamples<std::uint16_t>
                                                 : copySamples<std::uint8_t>;
    copy(source, destination, from, to, mode, before, after);
}

constexpr std::size_t memorySize = 1 << 17;

int between(std::mt19937& random, int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(random);
}

/// A frame of random size and layout in the middle of its memory.
std::unique_ptr<TestBuffer> randomBuffer(Memory& memory, std::mt19937& random, std::uint32_t format) {
    const int width = between(random, 1, 40);
    const int height = between(random, 1, 30);
    const int left = between(random, -9, 9);
    const int top = between(random, -9, 9);
    const int step = width * PixKit::bytesPerPixel(format) + between(random, 0, 2) * 12;
    const int shift = PixKit::bytesPerPixel(format) == 16 ? 0 : between(random, 0, 15);
    const auto middle = memorySize / 2 + static_cast<std::size_t>(shift);
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
    constexpr std::uint32_t modes[] = {0, 0x4000, 0x80BB, 0x8045, 0x8000, 0x80FF, 0x3FFF};
    return modes[random() % std::size(modes)];
}

void expectCopies(TestBuffer& source, TestBuffer& destination, const FrameRect& from, const FrameRect& to,
                  std::uint32_t mode, Memory& sourceMemory, Memory& destinationMemory) {
    const Memory sourceBefore = sourceMemory;
    Memory expected = destinationMemory;
    referenceCopy(source, destination, from, to, mode, sourceBefore, expected);
    vpixCopy(source.handle(), destination.handle(), &from, &to, mode);
    if (source.pixelBytes() == 16) {
        // Nearly right is right enough, and then the rest has to be as it was.
        for (std::size_t i = 0; i < expected.size(); i += 4) {
            float wanted = 0, got = 0;
            std::memcpy(&wanted, expected.data() + i, 4);
            std::memcpy(&got, destinationMemory.data() + i, 4);
            if (std::abs(got - wanted) < 1e-6) std::memcpy(expected.data() + i, &got, 4);
        }
    }
    ASSERT_EQ(expected == destinationMemory, true)
        << "from " << from << " of " << source.bounds() << " to " << to << " of " << destination.bounds()
        << ", row bytes " << source.handle()->rowBytes << " and " << destination.handle()->rowBytes
        << ", mode " << mode << ", pixels of " << source.pixelBytes() << " bytes";
}

TEST(VpixCopy, RandomGeometryMatchesTheExactDefinition) {
    std::mt19937 random(1);
    Memory sourceMemory = noise(memorySize, random);
    Memory destinationMemory = noise(memorySize, random);
    for (const std::uint32_t format :
         {PixKit::formatBgra, PixKit::formatCode("Bgra"), PixKit::formatCode("BGra")}) {
        const bool isFloat = PixKit::bytesPerPixel(format) == 16;
        for (std::size_t i = 0; isFloat && i < memorySize; i += 4) {
            for (Memory* memory : {&sourceMemory, &destinationMemory}) {
                const float value = std::uniform_real_distribution<float>(-1, 2)(random);
                std::memcpy(memory->data() + i, &value, 4);
            }
        }
        for (int round = 0; round < (isFloat ? 1000 : 3000); ++round) {
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
    std::vector<Case> cases = {
        {2200, 2, 2200, 2},                                                            // pixel for pixel
        {900, 1, 1300, 1},  {1, 700, 1, 1024},    {1299, 3, 1300, 3}, {2, 1, 733, 1},  // lines that grow
        {5000, 1, 8193, 1}, {1, 37, 1, 8191},  // about the longest unit
        {2200, 6, 1100, 3}, {2100, 9, 700, 3},    {1920, 32, 120, 2}, {900, 3, 900, 1},  // whole boxes
        {1300, 5, 1299, 4}, {2200, 40, 13, 3},    {6000, 2, 5, 1},                       // cut pixels
        {300, 3, 1111, 8},  {40000, 1, 30000, 1},
    };
    std::mt19937 random(6);
    // Every rounding of lines that grow: all weights that a length has meet small and large differences.
    for (int length = 2; length < 400; ++length)
        cases.push_back({between(random, 1, length - 1), 1, length, 1});
    Memory sourceMemory = noise(1 << 19, random);
    Memory destinationMemory = noise(1 << 19, random);
    for (const auto& [fromWidth, fromHeight, toWidth, toHeight] : cases) {
        const FrameRect from{0, 0, fromWidth, fromHeight}, to{0, 0, toWidth, toHeight};
        TestBuffer source(sourceMemory, 5, from, 4 * (fromWidth + between(random, 0, 2)));
        TestBuffer destination(destinationMemory, 3, to, 4 * (toWidth + between(random, 0, 2)));
        for (const std::uint32_t mode : {0U, 0x80BBU}) {
            expectCopies(source, destination, from, to, mode, sourceMemory, destinationMemory);
            expectCopies(source, destination, {-3, 0, fromWidth + 2, fromHeight},
                         {-2, 0, toWidth + 9, toHeight}, mode, sourceMemory, destinationMemory);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(VpixCopy, EveryBlendOfTwoBytesIsRoundedExactly) {
    constexpr std::uint32_t size = 256;
    const FrameRect bounds{0, 0, size / 4, size};
    Memory above(size * size), below(size * size), destinations;
    for (std::uint32_t i = 0; i < size * size; ++i) {
        above[i] = static_cast<std::uint8_t>(i / size);
        below[i] = static_cast<std::uint8_t>(i % size);
    }
    TestBuffer source(above, 0, bounds, size);
    for (std::uint32_t weight = 0; weight < 256; ++weight) {
        destinations = below;
        TestBuffer destination(destinations, 0, bounds, size);
        vpixCopy(source.handle(), destination.handle(), &bounds, &bounds, 0x8000 | weight);
        for (std::size_t i = 0; i < size * size; ++i) {
            const std::uint32_t expected = (above[i] * weight + below[i] * (255 - weight) + 127) / 255;
            ASSERT_EQ(destinations[i], expected) << i / size << " over " << i % size << ", weight " << weight;
        }
    }
}

TEST(VpixCopy, OverlapBehavesAsIfTheSourceHadBeenCopiedAside) {
    std::mt19937 random(2);
    Memory memory = noise(memorySize, random);
    for (int round = 0; round < 3000; ++round) {
        const auto source = randomBuffer(memory, random, PixKit::formatBgra);
        const auto other = randomBuffer(memory, random, PixKit::formatBgra);
        TestBuffer& destination = round % 4 == 0 ? *other : *source;
        FrameRect from = randomRect(source->bounds(), random), to = randomRect(destination.bounds(), random);
        if (round % 4 == 1) {
            from = source->bounds();
            const int across = between(random, -3, 3), down = between(random, -3, 3);
            to = {from.left + across, from.top + down, from.right + across, from.bottom + down};
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

/// Columns and rows beside each other, each of a size of its own, among other rectangles.
void addNeighbours(std::vector<FrameRect>& from, std::vector<FrameRect>& to, const FrameRect& source,
                   const FrameRect& destination, std::mt19937& random) {
    const bool areColumns = random() % 4 != 0, isSteady = random() % 2 == 0;
    const int count = between(random, 1, 40), reach = between(random, 0, 9);
    const auto line = [&](const FrameRect& bounds, int i, int begin, int end) {
        return areColumns
                   ? FrameRect{bounds.left + i, bounds.top + begin, bounds.left + i + 1, bounds.bottom - end}
                   : FrameRect{bounds.left + begin, bounds.top + i, bounds.right - end, bounds.top + i + 1};
    };
    for (int i = 0; i < count; ++i) {
        from.push_back(line(source, i + 1, between(random, -2, reach), between(random, -2, reach)));
        to.push_back(line(destination, i, isSteady ? 0 : between(random, -2, 2), 0));
    }
}

VPixBatchSuiteCopy* batchCopy() {
    const void* suite = nullptr;
    EXPECT_EQ(vrmAcquireSuite(VIREO_VPIX_BATCH_SUITE, 1, &suite), 0);
    return static_cast<const VPixBatchSuite*>(suite)->copy.get();
}

TEST(VpixBatch, CopiesAsOneAfterAnother) {
    const auto copyAll = batchCopy();
    std::mt19937 random(7);
    Memory sourceMemory = noise(memorySize, random), destinationMemory = noise(memorySize, random);
    for (int round = 0; round < 3000; ++round) {
        // One in four overlaps; some have rows that share bytes.
        const bool shared = random() % 4 == 0;
        const std::uint32_t format = PixKit::formatCode(random() % 8 == 0 ? "Bgra" : "bgra");
        const auto source = randomBuffer(shared ? destinationMemory : sourceMemory, random, format);
        const auto destination = randomBuffer(destinationMemory, random, format);
        if (random() % 8 == 0) destination->handle()->rowBytes = between(random, -3, 3) * 8;
        std::vector<FrameRect> from, to;
        for (int i = 0; i < 3; ++i) {
            addNeighbours(from, to, source->bounds(), destination->bounds(), random);
            from.push_back(randomRect(source->bounds(), random));
            to.push_back(randomRect(destination->bounds(), random));
        }
        const std::uint32_t mode = random() % 4 == 0 ? randomMode(random) : 0;
        const Memory before = destinationMemory;
        for (std::size_t i = 0; i < from.size(); ++i) {
            vpixCopy(source->handle(), destination->handle(), &from[i], &to[i], mode);
        }
        const Memory expected = destinationMemory;
        destinationMemory = before;
        ASSERT_EQ(copyAll(source->handle(), destination->handle(), from.data(), to.data(),
                          static_cast<std::int32_t>(from.size()), mode),
                  0);
        ASSERT_EQ(expected == destinationMemory, true)
            << "round " << round << ", " << source->bounds() << " to " << destination->bounds()
            << ", row bytes " << source->handle()->rowBytes << " and " << destination->handle()->rowBytes;
    }
}

TEST(VpixBatch, SharesWithWorkersWhatNobodySeesTheOrderOf) {
    constexpr int lines = 200, length = 11;
    const auto copyAll = batchCopy();
    std::mt19937 random(8);
    Memory sourceMemory = noise(memorySize, random), destinationMemory = noise(memorySize, random);
    for (int round = 0; round < 120; ++round) {
        const bool areColumns = round % 2 == 0;
        const FrameRect bounds =
            areColumns ? FrameRect{3, -2, 3 + lines, length - 2} : FrameRect{3, -2, 3 + length, lines - 2};
        const std::int32_t rowBytes = 4 * (bounds.right - bounds.left) + between(random, 0, 1) * 12;
        std::vector<FrameRect> from, to;
        for (int i = 0; i < lines; ++i) {
            const int inset = between(random, 0, 3);
            from.push_back(areColumns ? FrameRect{3 + i, -2 + inset, 4 + i, length - 2 - inset}
                                      : FrameRect{3 + inset, -2 + i, 3 + length - inset, -1 + i});
            to.push_back(areColumns ? FrameRect{3 + i, -2, 4 + i, length - 2}
                                    : FrameRect{3, -2 + i, 3 + length, -1 + i});
        }
        // The order of those that share a place, of one that is empty, or of a frame onto itself is kept.
        const int fault = round / 2 % 5;
        if (fault == 1) to[150] = to[151];
        if (fault == 2) std::swap(to[20], to[120]);
        if (fault == 3 && areColumns) std::swap(to[90].left, to[90].right);
        if (fault == 3 && !areColumns) std::swap(to[90].top, to[90].bottom);
        TestBuffer source(fault == 4 ? destinationMemory : sourceMemory, 1 << 16, bounds, rowBytes);
        TestBuffer destination(destinationMemory, (1 << 16) + 40, bounds, rowBytes);
        const std::uint32_t mode = randomMode(random);
        const auto copied = [&](hosting::WorkerThreads* workers) {
            const Memory before = destinationMemory;
            const hosting::WorkerLoan loan(workers);
            EXPECT_EQ(copyAll(source.handle(), destination.handle(), from.data(), to.data(), lines, mode), 0);
            const Memory after = destinationMemory;
            destinationMemory = before;  // in its place
            return after;
        };
        Workers workers(2, round % 3 != 0);
        const Memory expected = copied(nullptr);
        ASSERT_EQ(copied(&workers) == expected, true) << "round " << round;
        EXPECT_EQ(workers.runs, fault == 0 ? 1 : 0) << "round " << round;
    }
}

TEST(VpixCopy, FloatPixelsKeepEveryBitAndReplaceWhatIsNotANumber) {
    constexpr std::uint32_t signalling[8] = {0x7FA00001, 0xFF800001, 0x00000001, 0x80000000,
                                             0x7FC12345, 0x7F800000, 0x7FBFFFFF, 0x807FFFFF};
    constexpr float numbers[4] = {0.25F, -1, 2, 1};
    Memory memory(256);
    std::memcpy(memory.data(), signalling, 32);
    std::memcpy(memory.data() + 32, numbers, 16);
    const FrameRect pixel{0, 0, 1, 1}, both{0, 0, 2, 1};
    const std::uint32_t format = PixKit::formatCode("BGra");
    TestBuffer from(memory, 0, both, 32, format), one(memory, 32, pixel, 16, format);
    // Rows of another step, so that the block cannot move as one.
    TestBuffer to(memory, 128, both, 48, format);
    vpixCopy(from.handle(), to.handle(), &both, &both, 0);
    EXPECT_EQ(std::memcmp(memory.data() + 128, signalling, 32), 0);
    vpixCopy(one.handle(), to.handle(), &pixel, &both, 0);
    EXPECT_EQ(std::memcmp(memory.data() + 128, numbers, 16), 0);
    EXPECT_EQ(std::memcmp(memory.data() + 144, numbers, 16), 0);
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
