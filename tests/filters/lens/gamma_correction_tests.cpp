// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

#include <cmath>

namespace {

constexpr std::uint32_t gammaCorrectionId = 10026;

/// The largest level that the curve the other way does not lead above i. No two are as near as rounding
/// errors.
int curveEntry(int i, int gamma) {
    int level = 255;
    while (255 * std::pow(level / 255.0, 10.0 / gamma) > i * (1 + 1e-12)) --level;
    return level;
}

/// A row that holds every level in each channel.
Picture everyLevel() {
    Picture picture{256, 1};
    for (int i = 0; i < 256; ++i) picture.at(i, 0) = pixelOf(i, (i + 85) % 256, (i + 170) % 256, i ^ 0xA5);
    return picture;
}

Picture corrected(Picture picture, int gamma) {
    for (std::uint32_t& pixel : picture.pixels) {
        const auto entry = [&](int channel) { return curveEntry(channelOf(pixel, channel), gamma); };
        pixel = pixelOf(entry(0), entry(1), entry(2), channelOf(pixel, 3));
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
