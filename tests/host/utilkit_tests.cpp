// SPDX-License-Identifier: MIT
#include "host/utilkit/utilkit.h"
#include "tests/host/test_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

namespace {

constexpr std::int32_t minimum = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t maximum = std::numeric_limits<std::int32_t>::max();

TEST(FixedPoint, TruncatesTowardZeroAndSaturates) {
    struct Case {
        std::int32_t a, b, product, quotient;
    };
    const Case cases[] = {
        {0x10000, 0x10000, 0x10000, 0x10000},
        {-3, 0x8000, -1, -6},
        {3, 0x8000, 1, 6},
        {-0x10000, 0x30000, -0x30000, -0x5555},
        {maximum, maximum, maximum, 0x10000},
        {minimum, maximum, -maximum, -0x10000},
        {minimum, minimum, maximum, 0x10000},
        {minimum, 0x10000, minimum, minimum},
        {minimum, -0x10000, maximum, maximum},
        {maximum, 1, 0x7FFF, maximum},
        {-maximum, 1, -0x7FFF, -maximum},
        {maximum, -1, -0x7FFF, -maximum},
        {7, 0, 0, maximum},
        {-7, 0, 0, -maximum},
        {0, 0, 0, 0},
        {0, minimum, 0, 0},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(FixedMul(each.a, each.b), each.product) << each.a << " * " << each.b;
        EXPECT_EQ(FixedDiv(each.a, each.b), each.quotient) << each.a << " / " << each.b;
    }
}

TEST(SmoothAlpha, WeighsNeighboursAndLeavesTheRestAlone) {
    std::mt19937 random(1);
    for (int round = 0; round < 400; ++round) {
        const int width = round % 71;
        const int height = round / 60;
        const int step = width * 4 + static_cast<int>(random() % 3) * 4;
        const int rowBytes = random() % 2 == 0 ? step : -step;
        Memory memory = noise(8192, random);
        const Memory before = memory;
        const std::int64_t first = 4096 + static_cast<std::int64_t>(random() % 4);
        const auto alphaAt = [&](int x, int y) {
            return static_cast<std::size_t>(first + std::int64_t{y} * rowBytes + 4 * x + 3);
        };
        Memory expected = before;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                int sum = 8;
                for (int dy = -1; dy <= 1; ++dy) {
                    for (int dx = -1; dx <= 1; ++dx) {
                        sum += (2 - std::abs(dx)) * (2 - std::abs(dy)) *
                               before[alphaAt(std::clamp(x + dx, 0, width - 1),
                                              std::clamp(y + dy, 0, height - 1))];
                    }
                }
                expected[alphaAt(x, y)] = static_cast<std::uint8_t>(sum / 16);
            }
        }
        SmoothAlpha(memory.data() + first, rowBytes, width, height);
        ASSERT_EQ(memory, expected) << width << " x " << height << ", row bytes " << rowBytes;
    }
    Memory memory = noise(64, random);
    const Memory before = memory;
    SmoothAlpha(memory.data(), 16, -1, 4);
    SmoothAlpha(memory.data(), 16, 4, minimum);
    EXPECT_EQ(memory, before);
}

}  // namespace
