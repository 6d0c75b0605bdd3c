// SPDX-License-Identifier: MIT
// Every kernel set gives the same bytes, and what they mean.
#include "engine/pixels/pixel_layout_kernels.h"
#include "tests/support/golden_file.h"
#include "tests/support/instruction_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <random>
#include <string>

namespace vireo {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::mt19937_64;
using Convert = void (*)(const PixelFormat&, const void*, void*, std::ptrdiff_t);

class PixelLayouts : public testing::TestWithParam<simd::InstructionSet> {
protected:
    const PixelLayoutKernels& kernels = pixelLayoutKernelsTables.at(GetParam());
};

/// Any samples; 0, full and nearly nothing, which alphas may be, among them. Floats lie a little beyond 0 to
/// 1, too.
template <class Sample>
Bytes noiseOf(std::ptrdiff_t count, Random& random) {
    constexpr bool isFloat = std::is_floating_point_v<Sample>;
    constexpr Sample full = isFloat ? Sample{1} : std::numeric_limits<Sample>::max();
    constexpr Sample rare[] = {0, full, isFloat ? static_cast<Sample>(1e-30) : Sample{1},
                               isFloat ? static_cast<Sample>(1e30) : full};
    std::vector<Sample> samples(static_cast<std::size_t>(count));
    for (Sample& sample : samples) {
        sample = static_cast<Sample>(random() % (isFloat ? 1500 : 65536));
        if (isFloat) sample = sample / Sample(1000) - Sample(0.25);
        if (random() % 4 == 0) sample = rare[random() % 4];
    }
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(samples.data());
    return {bytes, bytes + samples.size() * sizeof(Sample)};
}

Bytes noise(PixelLayout layout, SampleDepth depth, std::ptrdiff_t width, Random& random) {
    const std::ptrdiff_t samples = samplesOf(layout) * width;
    return depth == SampleDepth::Eight     ? noiseOf<std::uint8_t>(samples, random)
           : depth == SampleDepth::Sixteen ? noiseOf<std::uint16_t>(samples, random)
                                           : noiseOf<float>(samples, random);
}

/// A row that was converted at any address, or in place, with bytes before and behind it that must stay.
Bytes converted(Convert convert, const PixelFormat& format, const Bytes& source, std::ptrdiff_t width,
                std::size_t bytes, std::size_t offset, bool isInPlace = false) {
    // Nothing lies behind the source, so that the address sanitizer sees what reads there.
    Bytes given(offset), memory(bytes + 256, 0xA7);
    given.insert(given.end(), source.begin(), source.end());
    std::uint8_t* const made = memory.data() + 128 - offset;
    if (isInPlace) std::copy(source.begin(), source.end(), made);
    convert(format, isInPlace ? made : given.data() + offset, made, width);
    Bytes row(made, made + bytes);
    std::fill_n(made, bytes, 0xA7);
    EXPECT_EQ(std::count(memory.begin(), memory.end(), 0xA7), std::ssize(memory)) << "around the row";
    return row;
}

TEST_P(PixelLayouts, GiveTheBytesThatTheyGave) {
    const std::pair<SampleDepth, const char*> sums[] = {{SampleDepth::Eight, "fa571538"},
                                                        {SampleDepth::Sixteen, "bf37f8fc"},
                                                        {SampleDepth::Float, "b61913c8"}};
    for (const auto& [depth, sum] : sums) {
        Random random(5);
        Checksum made;
        for (int i = 0; i < 22; ++i) {
            const PixelFormat format{static_cast<PixelLayout>(i / 2), depth, i % 2 == 1};
            for (std::ptrdiff_t width = 0; width < 1000; width += width < 70 ? 1 : 233) {
                const Bytes given = noise(format.layout, depth, width, random);
                const Bytes bgra = noise(PixelLayout::Bgra, depth, width, random);
                const std::size_t offset = random() % 64;
                for (const bool isIn : {true, false}) {
                    const auto convert = isIn ? kernels.toBgra : kernels.fromBgra;
                    const Bytes &from = isIn ? given : bgra, &to = isIn ? bgra : given;
                    const Bytes row = converted(convert, format, from, width, to.size(), offset);
                    made.add(row);
                    if (from.size() == to.size()) {
                        EXPECT_EQ(converted(convert, format, from, width, to.size(), offset, true), row);
                    }
                }
            }
        }
        EXPECT_EQ(made.text(), sum) << static_cast<int>(depth) << " bits";
    }
}

TEST_P(PixelLayouts, MultiplyAndDivideEveryColorByEveryAlpha) {
    Bytes pixels;
    for (int pair = 0; pair < 256 * 256; ++pair) {
        const int color = pair & 0xFF, alpha = pair >> 8;
        for (const int sample : {color, (color * 7 + 3) & 0xFF, 255 - color, alpha})
            pixels.push_back(static_cast<std::uint8_t>(sample));
    }
    const PixelFormat premultiplied{PixelLayout::Bgra, SampleDepth::Eight, true};
    Bytes straight(pixels.size()), multiplied(pixels.size());
    kernels.toBgra(premultiplied, pixels.data(), straight.data(), 256 * 256);
    kernels.fromBgra(premultiplied, pixels.data(), multiplied.data(), 256 * 256);
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const int color = pixels[i], alpha = pixels[i | 3];
        const bool isAlpha = i % 4 == 3;
        const int quotient = alpha == 0 ? 0 : (255 * std::min(color, alpha) + alpha / 2) / alpha;
        ASSERT_EQ(straight[i], isAlpha ? alpha : quotient) << color << " of " << alpha;
        ASSERT_EQ(multiplied[i], isAlpha ? alpha : (color * alpha + 127) / 255) << color << " of " << alpha;
    }
}

// Floats that no picture should have keep their bits where they are only moved, and no alpha makes an
// infinity out of a number.
TEST_P(PixelLayouts, TakeFloatsOfAnyKind) {
    using Limits = std::numeric_limits<float>;
    const float pixels[] = {
        Limits::quiet_NaN(), Limits::infinity(), Limits::denorm_min(), -1, -Limits::infinity(), 0.5F, -0.0F,
        Limits::quiet_NaN()};
    float moved[8], back[8], straight[8];
    for (const auto layout : {PixelLayout::Rgba, PixelLayout::Abgr}) {
        kernels.fromBgra({layout, SampleDepth::Float}, pixels, moved, 2);
        kernels.toBgra({layout, SampleDepth::Float}, moved, back, 2);
        EXPECT_EQ(std::memcmp(back, pixels, sizeof pixels), 0);
    }
    kernels.toBgra({PixelLayout::Bgra, SampleDepth::Float, true}, pixels, straight, 2);
    for (const int color : {0, 1, 2, 4, 5, 6}) EXPECT_EQ(straight[color], 0) << color;
    for (const int alpha : {3, 7}) EXPECT_EQ(std::memcmp(straight + alpha, pixels + alpha, sizeof(float)), 0);
}

INSTANTIATE_TEST_SUITE_P(Sets, PixelLayouts, testing::ValuesIn(runnableInstructionSets()),
                         [](const auto& tested) { return std::string(instructionSetName(tested.param)); });

}  // namespace
}  // namespace vireo
