// SPDX-License-Identifier: MIT
// Every kernel set gives the same bytes, and what they mean.
#include "engine/pixels/pixel_layout_kernels.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace vireo {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Random = std::mt19937_64;

struct Layout {
    PixelLayout layout;
    int samples;
};

constexpr Layout layouts[] = {
    {PixelLayout::Bgra, 4}, {PixelLayout::Rgba, 4}, {PixelLayout::Argb, 4}, {PixelLayout::Abgr, 4},
    {PixelLayout::Bgrx, 4}, {PixelLayout::Rgbx, 4}, {PixelLayout::Xrgb, 4}, {PixelLayout::Xbgr, 4},
    {PixelLayout::Bgr, 3},  {PixelLayout::Rgb, 3},  {PixelLayout::Grey, 1},
};
constexpr SampleDepth depths[] = {SampleDepth::Eight, SampleDepth::Sixteen, SampleDepth::Float};
constexpr int widest = 70;

/// One way of converting rows, and what it is called.
struct Converter {
    simd::InstructionSet set;

    void toBgra(const PixelFormat& format, const void* from, void* to, std::ptrdiff_t width) const {
        pixelLayoutKernelsTables.at(set).toBgra(format, from, to, width);
    }
    void fromBgra(const PixelFormat& format, const void* from, void* to, std::ptrdiff_t width) const {
        pixelLayoutKernelsTables.at(set).fromBgra(format, from, to, width);
    }
};

template <class Test>
void forEachSet(Test&& test) {
    for (const simd::InstructionSet set : simd::allInstructionSets) {
        if (set > simd::processorInstructionSet()) continue;
        SCOPED_TRACE(std::string(simd::instructionSetName(set)));
        test(Converter{set});
    }
}

template <class Test>
void forEachFormat(Test&& test) {
    for (const Layout& layout : layouts) {
        for (const SampleDepth depth : depths) {
            for (const bool premultiplied : {false, true}) {
                SCOPED_TRACE(std::to_string(static_cast<int>(layout.layout)) + ", " +
                             std::to_string(static_cast<int>(depth)) +
                             (premultiplied ? " bits, premultiplied" : " bits"));
                test(PixelFormat{layout.layout, depth, premultiplied}, layout.samples);
            }
        }
    }
}

constexpr double fullOf(SampleDepth depth) {
    return depth == SampleDepth::Eight ? 255 : depth == SampleDepth::Sixteen ? 65535 : 1;
}

std::size_t sampleBytes(SampleDepth depth) { return static_cast<std::size_t>(depth) / 8; }

void setSample(std::uint8_t* bytes, SampleDepth depth, int index, double value) {
    const auto write = [&]<class Sample>(Sample sample) {
        std::memcpy(bytes + static_cast<std::size_t>(index) * sizeof sample, &sample, sizeof sample);
    };
    switch (depth) {
        case SampleDepth::Eight: return write(static_cast<std::uint8_t>(value));
        case SampleDepth::Sixteen: return write(static_cast<std::uint16_t>(value));
        default: return write(static_cast<float>(value));
    }
}

/// Samples of any bits; alphas of 0, of 1 and full among them. Floats lie a little beyond 0 to 1, too.
Bytes noise(SampleDepth depth, int samples, Random& random) {
    Bytes bytes(static_cast<std::size_t>(samples) * sampleBytes(depth));
    for (int i = 0; i < samples; ++i) {
        const double full = fullOf(depth);
        const double any = depth == SampleDepth::Float
                               ? std::uniform_real_distribution(-0.25, 1.25)(random)
                               : static_cast<double>(random() % static_cast<std::uint64_t>(full + 1));
        const double rare[] = {0, full, depth == SampleDepth::Float ? 1e-30 : 1};
        setSample(bytes.data(), depth, i, random() % 4 == 0 ? rare[random() % 3] : any);
    }
    return bytes;
}

/// A row at an odd address, or wherever it was told, with bytes before and behind it that must stay.
class GuardedRow {
public:
    GuardedRow(std::size_t bytes, std::size_t offset)
        : memory_(bytes + 2 * guard + offset, 0xA7), at_(guard + offset), bytes_(bytes) {}

    std::uint8_t* data() { return memory_.data() + at_; }

    void expect(const Bytes& expected) {
        ASSERT_EQ(expected.size(), bytes_);
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), data()));
        expectGuards();
    }

    void expectGuards() {
        const auto isGuard = [](std::uint8_t byte) { return byte == 0xA7; };
        EXPECT_TRUE(std::all_of(memory_.data(), data(), isGuard)) << "before the row";
        EXPECT_TRUE(std::all_of(data() + bytes_, memory_.data() + memory_.size(), isGuard))
            << "behind the row";
    }

private:
    static constexpr std::size_t guard = 128;
    Bytes memory_;
    std::size_t at_;
    std::size_t bytes_;
};

/// The bytes of all that was converted, by FNV-1a.
class Checksum {
public:
    void add(const std::uint8_t* bytes, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) sum_ = (sum_ ^ bytes[i]) * 0x100000001B3;
    }
    std::uint64_t sum() const { return sum_; }

private:
    std::uint64_t sum_ = 0xCBF29CE484222325;
};

TEST(PixelLayout, GivesTheBytesThatItGave) {
    struct Expected {
        SampleDepth depth;
        bool premultiplied;
        std::uint64_t toBgra, fromBgra;
    };
    constexpr Expected sums[] = {
        {SampleDepth::Eight, false, 0xB4C69A82D2480466, 0xE39C804F35F61FCB},
        {SampleDepth::Eight, true, 0xA64D2C365994D8B4, 0x6B21A1815C8AF024},
        {SampleDepth::Sixteen, false, 0x4F57E3F3DDB08851, 0x2D079F873182C4F3},
        {SampleDepth::Sixteen, true, 0x1AA2847EE3210DEC, 0x42797918974440C0},
        {SampleDepth::Float, false, 0x3619B6AC1901B8D8, 0xFC170EB0A29C6EC0},
        {SampleDepth::Float, true, 0xAC5207F32DB345A1, 0x4B45A16AA435A616},
    };
    forEachSet([&](const Converter& convert) {
        for (const Expected& expected : sums) {
            Random random(5);
            Checksum to, from;
            for (const auto& [layout, samples] : layouts) {
                const PixelFormat format{layout, expected.depth, expected.premultiplied};
                ASSERT_EQ(samplesOf(layout), samples);
                for (int width = 0; width <= widest; ++width) {
                    // Nothing lies behind the source, so that the address sanitizer sees what reads there.
                    const Bytes source = noise(format.depth, samples * width, random);
                    const Bytes straight = noise(format.depth, 4 * width, random);
                    const std::size_t offset = random() % 64;
                    GuardedRow bgra(straight.size(), offset), made(source.size(), offset);
                    convert.toBgra(format, source.data(), bgra.data(), width);
                    convert.fromBgra(format, straight.data(), made.data(), width);
                    bgra.expectGuards();
                    made.expectGuards();
                    to.add(bgra.data(), straight.size());
                    from.add(made.data(), source.size());
                }
            }
            EXPECT_EQ(to.sum(), expected.toBgra) << std::hex << "0x" << to.sum();
            EXPECT_EQ(from.sum(), expected.fromBgra) << std::hex << "0x" << from.sum();
        }
    });
}

TEST(PixelLayout, ReadsFromAnyAddressAndConvertsInPlace) {
    forEachSet([](const Converter& convert) {
        forEachFormat([&](const PixelFormat& format, int samples) {
            Random random(6);
            for (const int width : {1, 5, 63, 64, 65, 300, 1000}) {
                const Bytes source = noise(format.depth, samples * width, random);
                const Bytes straight = noise(format.depth, 4 * width, random);
                Bytes in(straight.size()), out(source.size());
                convert.toBgra(format, source.data(), in.data(), width);
                convert.fromBgra(format, straight.data(), out.data(), width);
                for (const std::size_t offset : {1, 2, 3, 31}) {
                    const auto expect = [&](auto&& work, const Bytes& from, const Bytes& to) {
                        GuardedRow read(from.size(), offset), written(to.size(), offset ^ 5);
                        std::copy(from.begin(), from.end(), read.data());
                        work(format, read.data(), written.data(), width);
                        written.expect(to);
                        if (samples != 4) return;
                        work(format, read.data(), read.data(), width);
                        read.expect(to);
                    };
                    expect([&](auto... row) { convert.toBgra(row...); }, source, in);
                    expect([&](auto... row) { convert.fromBgra(row...); }, straight, out);
                }
            }
        });
    });
}

// All pairs of 8 bits, which are all that there are.
TEST(PixelLayout, BringsEveryPremultipliedColorBack) {
    const PixelFormat premultiplied{PixelLayout::Bgra, SampleDepth::Eight, true};
    forEachSet([&](const Converter& convert) {
        Bytes pixels;
        for (int alpha = 0; alpha < 256; ++alpha) {
            for (int color = 0; color < 256; ++color) {
                for (const int sample : {color, (color * 7 + 3) & 0xFF, 255 - color, alpha}) {
                    pixels.push_back(static_cast<std::uint8_t>(sample));
                }
            }
        }
        const auto width = static_cast<std::ptrdiff_t>(pixels.size() / 4);
        Bytes straight(pixels.size()), back(pixels.size());
        convert.toBgra(premultiplied, pixels.data(), straight.data(), width);
        convert.fromBgra(premultiplied, straight.data(), back.data(), width);
        for (std::size_t i = 0; i < pixels.size(); ++i) {
            const int alpha = pixels[i | 3];
            ASSERT_LE(back[i], alpha);
            ASSERT_TRUE(back[i] == pixels[i] || pixels[i] > alpha) << "alpha " << alpha;
            ASSERT_TRUE(straight[i] == pixels[i] || alpha != 255);
            ASSERT_TRUE(straight[i] == 0 || alpha != 0);
        }
    });
}

// Floats that no picture should have: what is only moved keeps its bits, nothing is limited, and no alpha
// makes an infinity out of a number.
TEST(PixelLayout, TakesFloatsOfAnyKind) {
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
        for (const float alpha : strange) {
            for (const float sample : {color, 0.5F, 1.5F, alpha}) pixels.push_back(sample);
        }
    }
    const auto width = static_cast<std::ptrdiff_t>(pixels.size() / 4);
    const auto bytes = pixels.size() * sizeof(float);
    forEachSet([&](const Converter& convert) {
        std::vector<float> moved(pixels.size()), back(pixels.size());
        for (const PixelLayout layout :
             {PixelLayout::Bgra, PixelLayout::Rgba, PixelLayout::Argb, PixelLayout::Abgr}) {
            convert.fromBgra({layout, SampleDepth::Float, false}, pixels.data(), moved.data(), width);
            convert.toBgra({layout, SampleDepth::Float, false}, moved.data(), back.data(), width);
            EXPECT_EQ(std::memcmp(back.data(), pixels.data(), bytes), 0);
        }
        convert.toBgra({PixelLayout::Bgra, SampleDepth::Float, true}, pixels.data(), moved.data(), width);
        convert.fromBgra({PixelLayout::Bgra, SampleDepth::Float, true}, pixels.data(), back.data(), width);
        for (std::size_t i = 0; i < pixels.size(); i += 4) {
            const float alpha = pixels[i + 3];
            EXPECT_EQ(std::memcmp(&moved[i + 3], &alpha, sizeof alpha), 0);
            for (std::size_t c = i; c < i + 3; ++c) {
                const float quotient = alpha > 0 ? pixels[c] / alpha : 0;
                const float product = pixels[c] * alpha;
                EXPECT_TRUE(moved[c] == quotient || (std::isnan(moved[c]) && std::isnan(quotient)));
                EXPECT_TRUE(back[c] == product || (std::isnan(back[c]) && std::isnan(product)));
            }
            if (!(alpha > 0)) {
                EXPECT_TRUE(moved[i] == 0 && moved[i + 1] == 0 && moved[i + 2] == 0) << alpha;
            }
        }
    });
}

}  // namespace
}  // namespace vireo
