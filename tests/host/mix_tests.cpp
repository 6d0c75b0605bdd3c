// SPDX-License-Identifier: MIT
#include "host/hosting/mix.h"

#include "tests/host/test_buffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>

namespace {

/// The rule as it reads, in more digits than any depth has.
template <class Channel>
long double mixed(const Channel* source, const Channel* result, int channel, int percent) {
    long double sourceWeight = 100 - percent, resultWeight = percent;
    // Colours weigh as much as they cover.
    if (channel < 3 && (source[3] != 0 || result[3] != 0)) {
        sourceWeight *= source[3];
        resultWeight *= result[3];
    }
    return (source[channel] * sourceWeight + result[channel] * resultWeight) / (sourceWeight + resultWeight);
}

template <class Channel>
void expectMix(std::uint32_t format, double top) {
    std::mt19937 random(3);
    std::uniform_real_distribution<double> values(0, top);
    constexpr int channels = 4 * 300;
    const auto randomMemory = [&] {
        Memory memory(channels * sizeof(Channel));
        for (int i = 0; i < channels; ++i) {
            // Many pixels are opaque or clear, which have ways of their own.
            const auto special = i % 4 == 3 ? random() % 4 : 2;
            const auto value = static_cast<Channel>(special == 0 ? top : special == 1 ? 0 : values(random));
            std::memcpy(memory.data() + i * sizeof value, &value, sizeof value);
        }
        return memory;
    };
    for (const int percent : {1, 33, 50, 99}) {
        Memory sourceMemory = randomMemory(), resultMemory = randomMemory();
        const Memory before = resultMemory;
        const FrameRect bounds{0, 0, channels / 4, 1};
        TestBuffer source(sourceMemory, 0, bounds, 0, format);
        TestBuffer result(resultMemory, 0, bounds, 0, format);
        hosting::mixInto(*source.handle(), *result.handle(), percent);
        const auto* const s = reinterpret_cast<const Channel*>(sourceMemory.data());
        const auto* const d = reinterpret_cast<const Channel*>(before.data());
        for (int i = 0; i < channels; ++i) {
            const long double exact = mixed(s + i / 4 * 4, d + i / 4 * 4, i % 4, percent);
            const Channel got = reinterpret_cast<const Channel*>(resultMemory.data())[i];
            if constexpr (std::is_floating_point_v<Channel>) {
                ASSERT_NEAR(got, static_cast<double>(exact), 1e-6) << i << " at " << percent;
            } else {
                ASSERT_EQ(got, static_cast<Channel>(std::floor(exact + 0.5L))) << i << " at " << percent;
            }
        }
    }
}

TEST(Mix, FollowsTheRuleAtEveryDepth) {
    expectMix<std::uint8_t>(PixKit::formatBgra, 255);
    expectMix<std::uint16_t>(PixKit::formatCode("Bgra"), 65535);
    expectMix<float>(PixKit::formatCode("BGra"), 1);
}

}  // namespace
