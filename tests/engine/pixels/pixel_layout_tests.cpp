// SPDX-License-Identifier: MIT
// Every kernel set gives the same bytes, and what they mean.
#include "engine/pixels/pixel_layout_kernels.h"
#include "tests/support/golden_file.h"
#include "tests/support/instruction_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
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
    constexpr Sample rare[] = {0, full, isFloat ? static_cast<Sample>(1e-30) : Sample{1}};
    std::vector<Sample> samples(static_cast<std::size_t>(count));
    for (Sample& sample : samples) {
        sample = static_cast<Sample>(random() % (isFloat ? 1500 : 65536));
        if (isFloat) sample = sample / Sample(1000) - Sample(0.25);
        if (random() % 4 == 0) sample = rare[random() % 3];
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

/// A row at any address, with bytes before and behind it that must stay.
class GuardedRow {
public:
    GuardedRow(std::size_t bytes, std::size_t offset)
        : at_(guard + offset), memory_(bytes + at_ + guard, 0xA7) {}

    std::uint8_t* data() { return memory_.data() + at_; }

    Bytes bytes() const {
        const auto begin = memory_.begin() + static_cast<std::ptrdiff_t>(at_), end = memory_.end() - guard;
        const auto isGuard = [](std::uint8_t byte) { return byte == 0xA7; };
        EXPECT_TRUE(std::all_of(memory_.begin(), begin, isGuard)) << "before the row";
        EXPECT_TRUE(std::all_of(end, memory_.end(), isGuard)) << "behind the row";
        return {begin, end};
    }

private:
    static constexpr std::ptrdiff_t guard = 128;
    std::size_t at_;
    Bytes memory_;
};

/// A row that was converted. Where pixels keep their size, it is the same in place.
Bytes converted(Convert convert, const PixelFormat& format, const Bytes& source, std::size_t madeBytes,
                std::ptrdiff_t width, std::size_t offset) {
    // Nothing lies behind the source, so that the address sanitizer sees what reads there.
    Bytes given(offset);
    given.insert(given.end(), source.begin(), source.end());
    GuardedRow made(madeBytes, offset ^ 5);
    convert(format, given.data() + offset, made.data(), width);
    if (source.size() == madeBytes) {
        GuardedRow same(madeBytes, offset);
        std::copy(source.begin(), source.end(), same.data());
        convert(format, same.data(), same.data(), width);
        EXPECT_EQ(same.bytes(), made.bytes()) << "in place";
    }
    return made.bytes();
}

TEST_P(PixelLayouts, GiveTheBytesThatTheyGave) {
    const std::pair<SampleDepth, const char*> sums[] = {{SampleDepth::Eight, "c6d0a477"},
                                                        {SampleDepth::Sixteen, "9ccda7d1"},
                                                        {SampleDepth::Float, "e4fa525b"}};
    for (const auto& [depth, sum] : sums) {
        Random random(5);
        Checksum made;
        for (int i = 0; i < 22; ++i) {
            const PixelFormat format{static_cast<PixelLayout>(i / 2), depth, i % 2 == 1};
            for (std::ptrdiff_t width = 0; width < 1000; width += width < 70 ? 1 : 233) {
                const Bytes given = noise(format.layout, depth, width, random);
                const Bytes bgra = noise(PixelLayout::Bgra, depth, width, random);
                const std::size_t offset = random() % 64;
                made.add(converted(kernels.toBgra, format, given, bgra.size(), width, offset));
                made.add(converted(kernels.fromBgra, format, bgra, given.size(), width, offset));
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

// Floats that no picture should have: what is only moved keeps its bits, nothing is limited, and no alpha
// makes an infinity out of a number.
TEST_P(PixelLayouts, TakeFloatsOfAnyKind) {
    using Limits = std::numeric_limits<float>;
    const float strange[] = {Limits::quiet_NaN(),
                             Limits::infinity(),
                             -Limits::infinity(),
                             -0.0F,
                             -3.5F,
                             1e30F,
                             Limits::denorm_min(),
                             0.0F,
                             1.0F,
                             7.25F};
    std::vector<float> pixels;
    for (const float color : strange) {
        for (const float alpha : strange) pixels.insert(pixels.end(), {color, 0.5F, 1.5F, alpha});
    }
    const auto made = [](Convert convert, PixelLayout layout, bool premultiplied,
                         const std::vector<float>& given) {
        std::vector<float> row(given.size());
        convert({layout, SampleDepth::Float, premultiplied}, given.data(), row.data(),
                static_cast<std::ptrdiff_t>(given.size() / 4));
        return row;
    };
    for (const auto layout : {PixelLayout::Bgra, PixelLayout::Rgba, PixelLayout::Argb, PixelLayout::Abgr}) {
        const auto back = made(kernels.toBgra, layout, false, made(kernels.fromBgra, layout, false, pixels));
        EXPECT_EQ(std::memcmp(back.data(), pixels.data(), pixels.size() * sizeof(float)), 0);
    }
    const auto straight = made(kernels.toBgra, PixelLayout::Bgra, true, pixels);
    const auto multiplied = made(kernels.fromBgra, PixelLayout::Bgra, true, pixels);
    const auto isSame = [](float a, float b) { return a == b || (std::isnan(a) && std::isnan(b)); };
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        const float color = pixels[i], alpha = pixels[i | 3];
        const bool isAlpha = i % 4 == 3;
        EXPECT_TRUE(isSame(straight[i], isAlpha ? alpha : alpha > 0 ? color / alpha : 0)) << color << alpha;
        EXPECT_TRUE(isSame(multiplied[i], isAlpha ? alpha : color * alpha)) << color << " of " << alpha;
    }
}

INSTANTIATE_TEST_SUITE_P(Sets, PixelLayouts, testing::ValuesIn(runnableInstructionSets()),
                         [](const auto& tested) { return std::string(instructionSetName(tested.param)); });

}  // namespace
}  // namespace vireo
