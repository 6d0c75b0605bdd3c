// SPDX-License-Identifier: MIT
#include "host/hosting/mix.h"

#include "tests/host/test_buffer.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <random>

namespace {

/// The rule as it reads, in more digits than any depth has.
template <class Channel>
std::array<long double, 4> mixed(const Channel* source, const Channel* destination, int m) {
    std::array<long double, 4> s, d;
    std::copy_n(source, 4, s.begin());
    std::copy_n(destination, 4, d.begin());
    std::array<long double, 4> result;
    const long double sourceWeight = (100 - m) * (s[3] == 0 && d[3] == 0 ? 1 : s[3]);
    const long double resultWeight = m * (s[3] == 0 && d[3] == 0 ? 1 : d[3]);
    for (int i = 0; i < 3; ++i)
        result[i] = (s[i] * sourceWeight + d[i] * resultWeight) / (sourceWeight + resultWeight);
    result[3] = (s[3] * (100 - m) + d[3] * m) / 100;
    return result;
}

template <class Channel>
void expectMix(std::uint32_t format, double top) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> values(0, top);
    const auto channel = [&](int i) -> Channel {
        // Many pixels are opaque or clear, which have ways of their own.
        const int special = static_cast<int>(random() % 4);
        if (i == 3 && special == 0) return static_cast<Channel>(top);
        if (i == 3 && special == 1) return 0;
        return static_cast<Channel>(values(random));
    };
    constexpr int width = 300;
    constexpr std::size_t pixelBytes = 4 * sizeof(Channel);
    for (const int percent : {1, 33, 50, 99}) {
        Memory sourceMemory(pixelBytes * width), resultMemory(pixelBytes * width);
        TestBuffer source(sourceMemory, 0, {0, 0, width, 1}, 0, format);
        TestBuffer result(resultMemory, 0, {0, 0, width, 1}, 0, format);
        auto* s = reinterpret_cast<Channel*>(sourceMemory.data());
        auto* d = reinterpret_cast<Channel*>(resultMemory.data());
        for (int i = 0; i < 4 * width; ++i) {
            s[i] = channel(i % 4);
            d[i] = channel(i % 4);
        }
        std::vector<std::array<long double, 4>> expected;
        for (int x = 0; x < width; ++x, s += 4, d += 4) {
            expected.push_back(mixed(s, d, percent));
        }
        hosting::mixInto(*source.handle(), *result.handle(), percent);
        const auto* got = reinterpret_cast<const Channel*>(resultMemory.data());
        for (int i = 0; i < 4 * width; ++i) {
            const long double exact =
                expected[static_cast<std::size_t>(i / 4)][static_cast<std::size_t>(i % 4)];
            if constexpr (std::is_floating_point_v<Channel>) {
                ASSERT_NEAR(got[i], static_cast<double>(exact), 1e-6) << i;
            } else {
                ASSERT_EQ(got[i], static_cast<Channel>(std::floor(exact + 0.5L))) << i << " at " << percent;
            }
        }
    }
}

TEST(Mix, FollowsTheRuleAtEveryDepth) {
    expectMix<std::uint8_t>(PixKit::formatBgra, 255);
    expectMix<std::uint16_t>(PixKit::formatCode("Bgra"), 65535);
    expectMix<float>(PixKit::formatCode("BGra"), 1);
}

TEST(Mix, WeighsColoursByAlpha) {
    Memory clear{200, 200, 200, 0}, opaque{10, 20, 30, 255};
    TestBuffer source(clear, 0, {0, 0, 1, 1}, 4), result(opaque, 0, {0, 0, 1, 1}, 4);
    hosting::mixInto(*source.handle(), *result.handle(), 50);
    EXPECT_THAT(opaque, testing::ElementsAre(10, 20, 30, 128));
}

}  // namespace
