// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

#include <algorithm>

namespace {

constexpr std::uint32_t gammaCorrectionId = 10026;

/// A whole number without limit, its lowest digit of base 2^32 first.
using Digits = std::vector<std::uint32_t>;

Digits power(std::uint32_t base, int exponent, Digits factor = {1}) {
    for (int i = 0; i < exponent; ++i) {
        std::uint64_t carry = 0;
        for (std::uint32_t& digit : factor) {
            carry += std::uint64_t{digit} * base;
            digit = static_cast<std::uint32_t>(carry);
            carry >>= 32;
        }
        if (carry != 0) factor.push_back(static_cast<std::uint32_t>(carry));
    }
    while (!factor.empty() && factor.back() == 0) factor.pop_back();
    return factor;
}

bool atMost(const Digits& a, const Digits& b) {
    if (a.size() != b.size()) return a.size() < b.size();
    return !std::lexicographical_compare(b.rbegin(), b.rend(), a.rbegin(), a.rend());
}

/// The largest t with t <= 255 (i / 255)^(gamma / 10), compared as t^10 255^gamma <= i^gamma 255^10.
std::uint8_t curveEntry(int i, int gamma) {
    const Digits limit = power(255, 10, power(static_cast<std::uint32_t>(i), gamma));
    int t = 255;
    while (!atMost(power(static_cast<std::uint32_t>(t), 10, power(255, gamma)), limit)) --t;
    return static_cast<std::uint8_t>(t);
}

/// A row that holds every level in each channel.
Picture everyLevel() {
    Picture picture{256, 1};
    for (int i = 0; i < 256; ++i) picture.at(i, 0) = pixelOf(i, (i + 85) % 256, (i + 170) % 256, i ^ 0xA5);
    return picture;
}

Picture corrected(Picture picture, int gamma) {
    std::uint8_t curve[256];
    for (int i = 0; i < 256; ++i) curve[i] = curveEntry(i, gamma);
    for (std::uint32_t& pixel : picture.pixels) {
        pixel = pixelOf(curve[channelOf(pixel, 0)], curve[channelOf(pixel, 1)], curve[channelOf(pixel, 2)],
                        channelOf(pixel, 3));
    }
    return picture;
}

TEST(GammaCorrection, EveryEntryOfEveryCurveIsExactAndTheNearestIsTaken) {
    TestFrame source({.width = 256, .height = 1}, everyLevel());
    FilterUnderTest filter(gammaCorrectionId);
    EXPECT_TRUE(samePicture(everyLevel(), filter.rendered(source))) << "without settings";
    for (int gamma = 1; gamma <= 28; ++gamma) {
        filter.setSettings<std::uint16_t>({static_cast<std::uint16_t>(gamma)});
        EXPECT_TRUE(samePicture(corrected(everyLevel(), gamma), filter.rendered(source))) << gamma;
    }
    for (const auto& [stored, used] : {std::pair{0, 1}, {29, 28}, {32768, 28}, {65535, 28}}) {
        filter.setSettings<std::uint16_t>({static_cast<std::uint16_t>(stored)});
        EXPECT_TRUE(samePicture(corrected(everyLevel(), used), filter.rendered(source))) << stored;
    }
}

}  // namespace
