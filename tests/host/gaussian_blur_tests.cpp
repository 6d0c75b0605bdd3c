// SPDX-License-Identifier: MIT
#include "host/fxkit/fxkit.h"
#include "host/fxkit/gaussian_blur.h"
#include "tests/host/short_memory.h"
#include "tests/host/workers.h"
#include "tests/support/instruction_sets.h"
#include "tests/support/test_frame.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <stdexcept>
#include <thread>

namespace {

Picture painted(int width, int height, const std::function<std::uint32_t(int x, int y)>& paint) {
    Picture picture{width, height};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) picture.at(x, y) = paint(x, y);
    }
    return picture;
}

FxKit::BlurFrame frameOf(const Picture& source, Picture& destination) {
    const std::int64_t rowBytes = std::int64_t{4} * source.width;
    return {reinterpret_cast<const std::uint8_t*>(source.pixels.data()),
            rowBytes,
            reinterpret_cast<std::uint8_t*>(destination.pixels.data()),
            rowBytes,
            source.width,
            source.height};
}

Picture blurred(simd::InstructionSet set, const Picture& source, double reachAcross, double reachDown,
                hosting::WorkerThreads* workers = nullptr) {
    Picture result{source.width, source.height};
    FxKit::gaussianBlur(blurKernelsTables.at(set), frameOf(source, result), reachAcross, reachDown, workers);
    return result;
}

Picture blurred(const Picture& source, double reachAcross, double reachDown) {
    return blurred(simd::InstructionSet::Baseline, source, reachAcross, reachDown);
}

/// The cut and normalised Gaussian, straight from its definition, over lines of `count` values that lie
/// `step` apart.
std::vector<double> exactlyBlurred(const std::vector<double>& values, int count, int step, int reach) {
    std::vector<double> result(values.size());
    double sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        const double weight = reach == 0 ? 1 : std::exp(-4.5 * i * i / reach / reach);
        sum += weight;
        for (int at = 0; at < static_cast<int>(values.size()); ++at) {
            const int place = at / step % count;
            result[at] += weight * values[at + (std::clamp(place + i, 0, count - 1) - place) * step];
        }
    }
    for (double& value : result) value /= sum;
    return result;
}

/// Every set gives the same bytes, and these lie within 1 of the exact values: half a level for rounding and
/// no more than 0.4 for the method.
void expectNearlyExact(const Picture& source, int reachAcross, int reachDown) {
    SCOPED_TRACE(testing::Message() << "reach " << reachAcross << ", " << reachDown << " in " << source.width
                                    << " x " << source.height);
    const Picture result = blurred(source, reachAcross, reachDown);
    for (const simd::InstructionSet set : runnableInstructionSets()) {
        EXPECT_TRUE(samePicture(result, blurred(set, source, reachAcross, reachDown)))
            << instructionSetName(set);
    }
    std::vector<double> exact;
    for (const std::uint32_t pixel : source.pixels) {
        for (int channel = 0; channel < 4; ++channel) exact.push_back(channelOf(pixel, channel));
    }
    exact = exactlyBlurred(exact, source.width, 4, reachAcross);
    exact = exactlyBlurred(exact, source.height, 4 * source.width, reachDown);
    double worst = 0;
    for (std::size_t i = 0; i < exact.size(); ++i)
        worst =
            std::max(worst, std::abs(channelOf(result.pixels[i / 4], static_cast<int>(i % 4)) - exact[i]));
    EXPECT_LT(worst, 0.9);
}

TEST(GaussianBlur, IsNearlyExactOnFramesOfAnySizeAndReach) {
    Random random(1);
    for (const auto& [width, height] :
         {std::pair{1, 1}, {1, 2}, {2, 1}, {3, 5}, {7, 33}, {8, 64}, {9, 31}, {17, 40}, {70, 3}}) {
        const Picture source = noise(width, height, random);
        for (int i = 0; i < 24; ++i)
            expectNearlyExact(source, static_cast<int>(random() % 21), static_cast<int>(random() % 21));
        for (const auto& [across, down] : {std::pair{108, 192}, {400, 0}, {0, 400}})
            expectNearlyExact(source, across, down);
    }
}

// What is hard for a method that is only nearly exact: steps at the kernel's end, single pixels, and black
// and white in time with a cosine that the method leaves out.
TEST(GaussianBlur, IsNearlyExactOnHardPictures) {
    for (const int reach : {1, 2, 3, 4, 5, 7, 8, 12, 20, 48, 108, 192, 400}) {
        const int length = std::min(4 * reach + 11, 1000);
        std::vector<std::function<bool(int)>> lines = {[](int x) { return x % 2 == 0; },
                                                       [=](int x) { return x < length / 2; },
                                                       [=](int x) { return x >= reach; },
                                                       [=](int x) { return x > reach; },
                                                       [=](int x) { return x == length / 2; },
                                                       [](int x) { return x != 0; },
                                                       [](int) { return true; }};
        for (int waves = 3; waves <= 7; ++waves) {
            lines.emplace_back([=](int x) {
                const int fromCentre = std::abs(x - length / 2);
                return (4 * waves * fromCentre + 2 * reach + 1) / (4 * reach + 2) % 2 == 0;
            });
        }
        for (std::size_t i = 0; i < lines.size(); ++i) {
            SCOPED_TRACE(i);
            const auto pixel = [&](int x, int y) { return lines[i](x) == lines[i](y) ? 0xFFFFFFFF : 0; };
            const int middle = length / 2;
            expectNearlyExact(painted(length, 2, [&](int x, int) { return pixel(x, middle); }), reach, 1);
            expectNearlyExact(painted(2, length, [&](int, int y) { return pixel(middle, y); }), 1, reach);
            if (reach <= 20) expectNearlyExact(painted(length, length, pixel), reach, reach);
        }
    }
}

// A state that is carried along a line must not wander off: the frame's end is as good as its start.
TEST(GaussianBlur, LeavesFlatPartsOfLongLinesAlone) {
    constexpr std::uint32_t flat = 0x504F4E4D;
    for (const int reach : {3, 48, 192, 400}) {
        for (const auto& [width, height] : {std::pair{12000, 1}, {1, 12000}}) {
            const Picture source = painted(width, height, [&](int x, int y) {
                return x + y < 6000 ? static_cast<std::uint32_t>(x + y) * 0x9E3779B1 : flat;
            });
            for (const simd::InstructionSet set : runnableInstructionSets()) {
                const Picture result = blurred(set, source, reach, reach);
                EXPECT_EQ(std::count(result.pixels.begin() + 6001 + reach, result.pixels.end(), flat),
                          5999 - reach)
                    << instructionSetName(set) << " reach " << reach;
            }
        }
    }
}

TEST(GaussianBlur, TakesReachesThatAreNoSmallNumbers) {
    Random random(3);
    const Picture source = noise(20, 10, random);
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(blurred(source, 0.99, -5), source);
    EXPECT_EQ(blurred(source, none, none), source);
    EXPECT_EQ(blurred(source, 4.99, 2.5), blurred(source, 4, 2));

    // From afar a row is half its first pixel and half its last.
    for (const double reach : {1e6, 1e9, 1e300, std::numeric_limits<double>::infinity()}) {
        const Picture result = blurred(source, reach, 0);
        for (int i = 0; i < 4 * 20 * 10; ++i) {
            const int x = i / 4 % 20, y = i / 80, channel = i % 4;
            const int twice = channelOf(source.at(0, y), channel) + channelOf(source.at(19, y), channel);
            EXPECT_LE(std::abs(2 * channelOf(result.at(x, y), channel) - twice), 2) << reach << ' ' << x;
        }
    }
}

TEST(GaussianBlur, WritesTheFrameAloneAndTakesRowsOfEitherSign) {
    constexpr int width = 37, height = 41;
    Random random(4);
    // Both pictures lie in one frame: apart, at the same place, and shifted by a row and a pixel.
    for (const bool negative : {false, true}) {
        for (const auto& [from, to] : {std::pair{0, 50}, {1, 1}, {0, 1}, {1, 0}}) {
            TestFrame frame({.width = 90, .height = 95, .padding = 12, .negativeRowBytes = negative}, random);
            Picture expected = frame.picture();
            Picture source{width, height};
            for (int y = 0; y < height; ++y) std::copy_n(expected.row(from + y) + from, width, source.row(y));
            Picture result = blurred(source, 6, 9);
            for (int y = 0; y < height; ++y) std::copy_n(result.row(y), width, expected.row(to + y) + to);
            const std::int32_t rowBytes = frame.handle()->rowBytes;
            FX_GaussianBlur(frame.row(from) + 4 * from, rowBytes, width, height, 4, frame.row(to) + 4 * to,
                            rowBytes, width, height, 4, 6, 9, 1, 0, 3, 2);
            EXPECT_TRUE(samePicture(expected, frame.picture())) << from << " to " << to;
            EXPECT_TRUE(frame.guardsHold()) << from << " to " << to;
        }
    }
}

TEST(GaussianBlur, GivesTheSameBytesOnAnyNumberOfThreads) {
    Workers workers[] = {Workers(1), Workers(2), Workers(3), Workers(8), Workers(5, false)};
    Random random(11);
    for (const auto& [width, height] : {std::pair{131, 129}, {67, 401}, {3, 6000}, {3000, 19}, {40, 512}}) {
        const Picture source = noise(width, height, random);
        for (const auto& [across, down] :
             {std::pair{1., 1.}, {3, 200}, {77, 5}, {0, 9}, {9, 0}, {4000, 3000}, {1e9, 1e9}}) {
            const Picture expected = blurred(source, across, down);
            for (const simd::InstructionSet set : runnableInstructionSets()) {
                for (Workers& each : workers) {
                    EXPECT_TRUE(samePicture(expected, blurred(set, source, across, down, &each)))
                        << instructionSetName(set) << " on " << each.count() << " threads, reach " << across
                        << ", " << down;
                }
            }
        }
    }
}

TEST(GaussianBlur, UsesTheThreadsThatAreLentToTheCaller) {
    Random random(12);
    const Picture source = noise(300, 200, random);
    const Picture expected = blurred(source, 20, 30);
    Workers outer(2), inner(3);
    // In place, so that the picture is copied aside before.
    const auto expectRuns = [&](int ofOuter, int ofInner) {
        Picture picture = source;
        FX_GaussianBlur(picture.row(0), 1200, 300, 200, 4, picture.row(0), 1200, 300, 200, 4, 20, 30, 1, 0, 3,
                        2);
        EXPECT_TRUE(samePicture(expected, picture));
        EXPECT_EQ(outer.runs, ofOuter);
        EXPECT_EQ(inner.runs, ofInner);
    };
    expectRuns(0, 0);
    {
        const hosting::WorkerLoan loan(&outer);
        expectRuns(1, 0);
        {
            const hosting::WorkerLoan nested(&inner);
            expectRuns(1, 1);
            const hosting::WorkerLoan none(nullptr);
            expectRuns(1, 1);
        }
        expectRuns(2, 1);
        std::thread(expectRuns, 2, 1).join();  // a loan is its thread's alone
    }
    expectRuns(2, 1);
}

TEST(GaussianBlur, LetsTheWorkersFailuresThrough) {
    class Failing : public hosting::WorkerThreads {
        int count() const override { return 2; }
        void run(int, const std::function<void(int)>&) override { throw std::runtime_error("ended"); }
    } failing;
    const Picture source{300, 200};
    EXPECT_THROW(blurred(simd::InstructionSet::Baseline, source, 2, 2, &failing), std::runtime_error);
}

// Whichever allocation fails, on threads too, and where the picture is blurred in place.
TEST(GaussianBlur, CopiesWithoutMemory) {
    Random random(6);
    const Picture source = noise(300, 100, random);
    Workers workers(5, false);
    bool hasFailed = true;
    for (int failing = 1; hasFailed; ++failing) {
        Picture picture = source;
        {
            const CountedMemory memory(failing);
            FxKit::gaussianBlur(blurKernelsTables.chosen(), frameOf(picture, picture), 40, 40, &workers);
            hasFailed = memory.hasFailed();
            EXPECT_EQ(memory.live(), 0);
        }
        EXPECT_EQ(picture == source, hasFailed) << failing;
    }
}

}  // namespace
