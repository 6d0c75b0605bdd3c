// SPDX-License-Identifier: MIT
#include "filters/lens/fixed_point.h"
#include "filters/lens/sampler.h"
#include "host/utilkit/utilkit.h"
#include "tests/filters/support/lens_reference.h"
#include "tests/support/filter_under_test.h"

#include <cmath>

namespace {

TEST(LensSampler, BlendsTowardTheSecondPixelRoundingDown) {
    for (int a = 0; a < 256; a += 3) {
        for (int b = 0; b < 256; b += 5) {
            for (int t = 0; t < 256; ++t) {
                const int expected = a + static_cast<int>(std::floor((b - a) * t / 256.0));
                ASSERT_EQ(blendPixels(pixelOf(a, b, 255, a), pixelOf(b, a, 255, 0), static_cast<unsigned>(t)),
                          pixelOf(expected, b + static_cast<int>(std::floor((a - b) * t / 256.0)), 255,
                                  a + static_cast<int>(std::floor(-a * t / 256.0))));
            }
        }
    }
}

TEST(LensSampler, StepsFromFieldFlags) {
    const struct {
        std::uint16_t flags;
        int x, y;
    } cases[] = {{0, 1, 1},      {0x0400, 2, 1}, {0x0100, 1, 2}, {0x0200, 1, 2}, {0x0800, 1, 2},
                 {0x0500, 1, 1}, {0x0C00, 1, 1}, {0xF0FF, 1, 1}, {0x0300, 1, 2}};
    for (const auto& example : cases) {
        const LensSteps steps = lensSteps(example.flags);
        EXPECT_EQ(steps.x, example.x) << std::hex << example.flags;
        EXPECT_EQ(steps.y, example.y) << std::hex << example.flags;
    }
}

TEST(LensSamplerKernels, EverySetEqualsThePlainVersion) {
    Random random(1);
    for (const auto set : runnableInstructionSets()) {
        for (const Geometry& geometry : awkwardGeometries()) {
            TestFrame source(geometry, random);
            const Picture picture = source.picture();
            const auto fill = static_cast<std::uint32_t>(random());
            const int count = static_cast<int>(random() % 90);
            std::vector<std::int32_t> x(static_cast<std::size_t>(count)), y = x;
            // Runs of near positions, so that whole vectors lie inside, outside and across the border.
            for (std::size_t i = 0; i < x.size(); ++i) {
                const bool jump = i % 16 == 0;
                x[i] = static_cast<std::int32_t>(
                    jump ? random() % (256u * static_cast<unsigned>(geometry.width)) : (x[i - 1] + 77u));
                y[i] = jump ? static_cast<std::int32_t>(random() %
                                                        (256u * static_cast<unsigned>(geometry.height)))
                            : y[i - 1];
                if (x[i] >= 256 * geometry.width || random() % 40 == 0) x[i] = y[i] = -1;
                if (y[i] < 0) x[i] = -1;
            }
            std::vector<std::uint32_t> result(x.size() + 1, 0x5A5A5A5A);
            const FrameView frame = frameOf(*source.handle());
            samplerKernelsTables.at(set).row(sampledPicture(frame, fill), x.data(), y.data(),
                                             reinterpret_cast<std::uint8_t*>(result.data()), count);
            for (std::size_t i = 0; i < x.size(); ++i) {
                const std::uint32_t expected =
                    x[i] < 0 ? fill
                             : referenceSample(picture, fill, x[i] * std::int64_t{256} + 255,
                                               y[i] * std::int64_t{256} + 255, true);
                ASSERT_EQ(result[i], expected)
                    << instructionSetName(set) << ' ' << geometry << ' ' << x[i] << ' ' << y[i];
            }
            ASSERT_EQ(result.back(), 0x5A5A5A5A);
        }
    }
}

TEST(LensFixedPoint, EqualsTheHostsOperations) {
    Random random(2);
    const std::int32_t edges[] = {0,          1,         -1,        65535,      65536,     -65536,
                                  0x7FFF0000, INT32_MAX, INT32_MIN, -INT32_MAX, 655360000, 46340 << 8};
    const auto any = [&] {
        return random() % 3 == 0 ? edges[random() % std::size(edges)]
                                 : static_cast<std::int32_t>(random()) >> random() % 31;
    };
    for (int i = 0; i < 200000; ++i) {
        const std::int32_t a = any();
        const std::int32_t b = any();
        ASSERT_EQ(fixedMul(a, b), FixedMul(a, b)) << a << ' ' << b;
        ASSERT_EQ(fixedDiv(a, b), FixedDiv(a, b)) << a << ' ' << b;
    }
    EXPECT_EQ(fixedMul(INT64_MAX, -5), -fixedLargest);
    EXPECT_EQ(fixedDiv(INT64_MIN, -5), fixedLargest);
}

TEST(LensFixedPoint, RootsAreTruncated) {
    Random random(3);
    const auto check = [](std::int64_t square) {
        const auto root = static_cast<long double>(fixedRoot(square)) / 65536;
        ASSERT_LE(root * root, square);
        ASSERT_GT((root + 1.0L / 65536) * (root + 1.0L / 65536), square);
    };
    for (std::int64_t square = 0; square < 70000; ++square) check(square);
    for (int i = 0; i < 20000; ++i) check(static_cast<std::int64_t>(random() % (1u << 30)));
    check((1 << 26) + 1);  // The nearest double to this root is a whole number of 65536ths above it.
}

}  // namespace
