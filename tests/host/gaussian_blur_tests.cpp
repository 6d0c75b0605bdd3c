// SPDX-License-Identifier: MIT
#include "host/fxkit/fxkit.h"
#include "host/fxkit/gaussian_blur.h"
#include "host/hosting/worker_threads.h"
#include "tests/host/short_memory.h"
#include "tests/support/instruction_sets.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

struct Size {
    int width;
    int height;
};

struct Picture {
    explicit Picture(Size theSize) : size(theSize), bytes(std::size_t{4} * size.width * size.height) {}

    const std::uint8_t* row(int y) const { return bytes.data() + std::ptrdiff_t{4} * size.width * y; }

    Size size;
    std::vector<std::uint8_t> bytes;
};

Picture painted(Size size, const std::function<int(int x, int y, int channel)>& paint) {
    Picture picture(size);
    for (std::size_t i = 0; i < picture.bytes.size(); ++i) {
        const int pixel = static_cast<int>(i / 4);
        picture.bytes[i] =
            static_cast<std::uint8_t>(paint(pixel % size.width, pixel / size.width, static_cast<int>(i % 4)));
    }
    return picture;
}

Picture noise(Size size, unsigned seed) {
    std::mt19937 random(seed);
    return painted(size, [&](int, int, int) { return random() & 0xFF; });
}

/// The cut and normalised Gaussian, straight from its definition, over `lines` lines of `count` values.
std::vector<double> exactlyBlurred(const std::vector<double>& values, int count, int lines,
                                   std::ptrdiff_t step, std::ptrdiff_t line, int reach) {
    if (reach == 0) return values;
    std::vector<double> weights(2 * reach + 1);
    double sum = 0;
    for (int i = -reach; i <= reach; ++i) {
        const double sigma = reach / 3.0;
        sum += weights[i + reach] = std::exp(-1.0 * i * i / (2 * sigma * sigma));
    }
    std::vector<double> result(values.size());
    for (int l = 0; l < lines; ++l) {
        for (int x = 0; x < count; ++x) {
            double value = 0;
            for (int i = -reach; i <= reach; ++i) {
                value += weights[i + reach] / sum * values[l * line + std::clamp(x + i, 0, count - 1) * step];
            }
            result[l * line + x * step] = value;
        }
    }
    return result;
}

std::vector<double> exactlyBlurred(const Picture& picture, int reachAcross, int reachDown) {
    const auto [width, height] = picture.size;
    std::vector<double> values(picture.bytes.begin(), picture.bytes.end());
    std::vector<double> across(values.size());
    // Four channels side by side are four pictures of one value a pixel.
    for (int channel = 0; channel < 4; ++channel) {
        const std::vector<double> plane(values.begin() + channel, values.end());
        const std::vector<double> blurred = exactlyBlurred(plane, width, height, 4, 4 * width, reachAcross);
        for (std::size_t i = 0; i < blurred.size(); i += 4) across[i + channel] = blurred[i];
    }
    return exactlyBlurred(across, height, 4 * width, 4 * width, 1, reachDown);
}

Picture blurred(simd::InstructionSet set, const Picture& source, double reachAcross, double reachDown,
                hosting::WorkerThreads* workers = nullptr) {
    Picture result(source.size);
    const std::int64_t rowBytes = 4 * source.size.width;
    FxKit::gaussianBlur(
        blurKernelsTables.at(set),
        {source.bytes.data(), rowBytes, result.bytes.data(), rowBytes, source.size.width, source.size.height},
        reachAcross, reachDown, workers);
    return result;
}

double worstError(const Picture& result, const std::vector<double>& exact) {
    double worst = 0;
    for (std::size_t i = 0; i < exact.size(); ++i) {
        worst = std::max(worst, std::abs(result.bytes[i] - exact[i]));
    }
    return worst;
}

/// Every set gives the same bytes, and these lie within 1 of the exact values: half a level for rounding and
/// no more than 0.4 for the method.
void expectNearlyExact(const Picture& source, int reachAcross, int reachDown, const std::string& what) {
    const Picture result = blurred(simd::InstructionSet::Baseline, source, reachAcross, reachDown);
    const double error = worstError(result, exactlyBlurred(source, reachAcross, reachDown));
    EXPECT_LT(error, 0.9) << what << " reach " << reachAcross << ", " << reachDown << " size "
                          << source.size.width << " x " << source.size.height;
    for (simd::InstructionSet set : runnableInstructionSets()) {
        EXPECT_TRUE(blurred(set, source, reachAcross, reachDown).bytes == result.bytes)
            << instructionSetName(set) << " on " << what << " reach " << reachAcross << ", " << reachDown;
    }
}

TEST(GaussianBlur, IsNearlyExactOnFramesOfAnySizeAndReach) {
    std::mt19937 random(1);
    const auto reaches = [&] { return std::pair(random() % 21, random() % 21); };
    for (const Size size :
         {Size{1, 1}, {1, 2}, {2, 1}, {3, 5}, {7, 33}, {8, 64}, {9, 31}, {17, 40}, {70, 3}}) {
        for (int i = 0; i < 24; ++i) {
            const auto [across, down] = reaches();
            expectNearlyExact(noise(size, random()), across, down, "noise");
        }
        expectNearlyExact(noise(size, random()), 108, 192, "noise");
        expectNearlyExact(noise(size, random()), 400, 0, "noise");
        expectNearlyExact(noise(size, random()), 0, 400, "noise");
    }
}

// What is hard for a method that is only nearly exact: steps at the kernel's end, single pixels, and black
// and white in time with a cosine that the method leaves out.
TEST(GaussianBlur, IsNearlyExactOnHardPictures) {
    for (const int reach : {1, 2, 3, 4, 5, 7, 8, 12, 20, 48, 108, 192, 400}) {
        const int length = std::min(4 * reach + 11, 1000);
        const auto white = [](bool is) { return is ? 255 : 0; };
        std::vector<std::pair<std::string, std::function<int(int)>>> lines = {
            {"a checkerboard", [=](int x) { return white(x % 2 == 0); }},
            {"half black", [=](int x) { return white(x < length / 2); }},
            {"a step at the reach", [=](int x) { return white(x >= reach); }},
            {"a step past the reach", [=](int x) { return white(x > reach); }},
            {"one white pixel", [=](int x) { return white(x == length / 2); }},
            {"one black pixel at the edge", [=](int x) { return white(x != 0); }},
            {"white", [=](int) { return 255; }}};
        for (int waves = 3; waves <= 7; ++waves) {
            lines.emplace_back(std::to_string(waves) + " waves", [=](int x) {
                const int fromCentre = std::abs(x - length / 2);
                return white((4 * waves * fromCentre + 2 * reach + 1) / (4 * reach + 2) % 2 == 0);
            });
        }
        for (const auto& [what, line] : lines) {
            const Size wide{length, 2};
            const Size high{2, length};
            expectNearlyExact(painted(wide, [&](int x, int, int) { return line(x); }), reach, 1, what);
            expectNearlyExact(painted(high, [&](int, int y, int) { return line(y); }), 1, reach, what);
            if (reach > 20) continue;
            const Size both{length, length};
            const auto product = [&](int x, int y, int) { return line(x) == line(y) ? 255 : 0; };
            expectNearlyExact(painted(both, product), reach, reach, what);
        }
    }
}

// A state that is carried along a line must not wander off: the frame's end is as good as its start.
TEST(GaussianBlur, LeavesFlatPartsOfLongLinesAlone) {
    for (const int reach : {3, 48, 192, 400}) {
        for (const Size size : {Size{12000, 1}, Size{1, 12000}}) {
            const Picture source = painted(size, [&](int x, int y, int channel) {
                const int along = x + y;
                return along < 6000 ? (along * 7919 + channel * 31) & 0xFF : 77 + channel;
            });
            for (simd::InstructionSet set : runnableInstructionSets()) {
                const Picture result = blurred(set, source, reach, reach);
                for (int along = 6001 + reach; along < 12000; ++along) {
                    for (int channel = 0; channel < 4; ++channel) {
                        ASSERT_EQ(result.bytes[4 * along + channel], 77 + channel) << along;
                    }
                }
            }
        }
    }
}

TEST(GaussianBlur, TakesReachesThatAreNoSmallNumbers) {
    const Picture source = noise({20, 10}, 3);
    const auto set = simd::InstructionSet::Baseline;
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(blurred(set, source, 0.99, -5).bytes, source.bytes);
    EXPECT_EQ(blurred(set, source, none, none).bytes, source.bytes);
    EXPECT_EQ(blurred(set, source, 4.99, 2.5).bytes, blurred(set, source, 4, 2).bytes);

    // From afar a row is half its first pixel and half its last.
    for (const double reach : {1e6, 1e9, 1e300, std::numeric_limits<double>::infinity()}) {
        const Picture result = blurred(set, source, reach, 0);
        for (int y = 0; y < source.size.height; ++y) {
            for (int i = 0; i < 4 * source.size.width; ++i) {
                const double half =
                    (source.row(y)[i % 4] + source.row(y)[4 * source.size.width - 4 + i % 4]) / 2.0;
                EXPECT_LE(std::abs(result.row(y)[i] - half), 1) << reach << " value " << i << " of row " << y;
            }
        }
    }
}

TEST(GaussianBlur, WritesTheFrameAloneAndTakesRowsOfEitherSign) {
    const Size size{37, 41};
    const int rowBytes = 4 * size.width + 12;
    const Picture source = noise(size, 4);
    const Picture expected = blurred(simd::InstructionSet::Baseline, source, 6, 9);
    // Source and destination: apart, the same, and shifted by a row and a pixel.
    struct Places {
        int source, destination;
    };
    for (const bool upward : {false, true}) {
        for (const Places places : {Places{0, 50}, {1, 1}, {0, 1}, {1, 0}}) {
            std::vector<std::uint8_t> memory(100 * rowBytes, 0xA5);
            const auto firstByte = [&](int place, int y) {
                const int row = upward ? size.height - 1 - y : y;
                return memory.data() + (place + row) * rowBytes + 4 * place % 8;
            };
            for (int y = 0; y < size.height; ++y) {
                std::copy_n(source.row(y), 4 * size.width, firstByte(places.source, y));
            }
            std::vector<std::uint8_t> after = memory;
            const int signedRowBytes = upward ? -rowBytes : rowBytes;
            FX_GaussianBlur(firstByte(places.source, 0), signedRowBytes, size.width, size.height, 4,
                            firstByte(places.destination, 0), signedRowBytes, size.width, size.height, 4, 6,
                            9, 1, 0, 3, 2);
            for (int y = 0; y < size.height; ++y) {
                std::copy_n(expected.row(y), 4 * size.width,
                            after.data() + (firstByte(places.destination, y) - memory.data()));
            }
            EXPECT_TRUE(memory == after)
                << "upward " << upward << " from " << places.source << " to " << places.destination;
        }
    }
}

/// Runs each part on a thread of its own.
class RealThreads : public hosting::WorkerThreads {
public:
    explicit RealThreads(int threads) : threads_(threads) {}

    int count() const override { return threads_; }
    void run(int parts, const std::function<void(int)>& work) override {
        ++runs;
        std::vector<std::thread> threads;
        for (int part = 0; part < parts; ++part) threads.emplace_back(work, part);
        for (std::thread& thread : threads) thread.join();
    }

    int runs = 0;

private:
    int threads_;
};

/// Promises threads and has none: the last part comes first, and the others when it is done.
class NoThreads : public hosting::WorkerThreads {
public:
    int count() const override { return 5; }
    void run(int parts, const std::function<void(int)>& work) override {
        for (int part = parts - 1; part >= 0; --part) work(part);
    }
};

TEST(GaussianBlur, GivesTheSameBytesOnAnyNumberOfThreads) {
    struct Reach {
        double across, down;
    };
    std::mt19937 random(11);
    for (const Size size : {Size{131, 129},
                            {1001, 37},
                            {67, 401},
                            {3, 6000},
                            {9, 2001},
                            {6001, 3},
                            {512, 97},
                            {5000, 33},
                            {40, 512}}) {
        const Picture source = noise(size, random());
        for (const Reach reach : {Reach{1, 1}, {3, 200}, {77, 5}, {0, 9}, {9, 0}, {4000, 3000}, {1e9, 1e9}}) {
            const Picture expected =
                blurred(simd::InstructionSet::Baseline, source, reach.across, reach.down);
            for (const simd::InstructionSet set : runnableInstructionSets()) {
                SCOPED_TRACE(std::string(instructionSetName(set)) + " " + std::to_string(size.width) + " x " +
                             std::to_string(size.height) + " reach " + std::to_string(reach.across) + ", " +
                             std::to_string(reach.down));
                for (const int threads : {1, 2, 3, 8}) {
                    RealThreads workers(threads);
                    EXPECT_TRUE(blurred(set, source, reach.across, reach.down, &workers).bytes ==
                                expected.bytes)
                        << threads << " threads";
                }
                NoThreads none;
                EXPECT_TRUE(blurred(set, source, reach.across, reach.down, &none).bytes == expected.bytes);
            }
        }
    }
}

TEST(GaussianBlur, UsesTheThreadsThatAreLentToTheCaller) {
    const Picture source = noise({300, 200}, 12);
    const Picture expected = blurred(simd::InstructionSet::Baseline, source, 20, 30);
    RealThreads outer(2), inner(3);
    // In place, so that the picture is copied aside before.
    const auto expectBlurred = [&] {
        Picture picture = source;
        FX_GaussianBlur(picture.bytes.data(), 1200, 300, 200, 4, picture.bytes.data(), 1200, 300, 200, 4, 20,
                        30, 1, 0, 3, 2);
        EXPECT_TRUE(picture.bytes == expected.bytes);
    };
    const auto expectRuns = [&](int ofOuter, int ofInner) {
        expectBlurred();
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
    const Picture source = noise({300, 200}, 12);
    EXPECT_THROW(blurred(simd::InstructionSet::Baseline, source, 2, 2, &failing), std::runtime_error);
}

// Whichever allocation fails, on threads too, and where the picture is blurred in place.
TEST(GaussianBlur, CopiesWithoutMemory) {
    const Picture source = noise({300, 100}, 6);
    NoThreads workers;
    bool hasFailed = true;
    for (int failing = 1; hasFailed; ++failing) {
        Picture picture = source;
        {
            const CountedMemory memory(failing);
            FxKit::gaussianBlur(blurKernelsTables.chosen(),
                                {picture.bytes.data(), 1200, picture.bytes.data(), 1200, 300, 100}, 40, 40,
                                &workers);
            hasFailed = memory.hasFailed();
            EXPECT_EQ(memory.live(), 0);
        }
        EXPECT_EQ(picture.bytes == source.bytes, hasFailed) << failing;
    }
    Picture result(source.size);
    {
        const ShortMemory shortage;
        FxKit::gaussianBlur(blurKernelsTables.chosen(),
                            {source.bytes.data(), 1200, result.bytes.data(), 1200, 300, 100}, 40, 40);
    }
    EXPECT_TRUE(result.bytes == source.bytes);
}

}  // namespace
