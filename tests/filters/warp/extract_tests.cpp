// SPDX-License-Identifier: MIT
#include "filters/warp/extract.h"
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t extractId = 10022;

/// Each entry by itself, for settings in their ranges.
int curveAt(int entry, const Extract::Settings& settings) {
    const int soft = (settings.high - settings.low) * settings.softness / 200;
    const auto clamped = [](int value) { return std::clamp(value, 0, 255); };
    const int riseBegin = clamped(settings.low - soft), riseEnd = clamped(settings.low + soft);
    const int fallBegin = clamped(settings.high - soft), fallEnd = clamped(settings.high + soft);
    const auto value = [&] {
        if (entry >= fallEnd) return 0;
        if (entry >= fallBegin) return 255 * (fallEnd - entry) / (2 * soft);
        if (entry >= riseEnd) return 255;
        return entry >= riseBegin ? 255 * (entry - riseBegin) / (2 * soft) : 0;
    };
    return settings.invert != 0 ? 255 - value() : value();
}

TEST(Extract, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(extractId, [](FilterUnderTest& filter, Picture& source, Random& random) {
        Extract::Settings settings{64, 192, 25, 0};
        if (random() % 8 != 0) {
            const auto below = [&](unsigned limit) { return static_cast<std::uint16_t>(random() % limit); };
            const std::uint16_t high = below(256);
            settings = {below(high + 1u), high, below(101), static_cast<std::uint8_t>(below(2))};
            filter.setRecord(settings);
        }
        // Random colours are seldom dark or bright, greys often.
        for (std::uint32_t& pixel : source.pixels) {
            if (random() % 2 == 0) pixel = (pixel & 0xFF) * 0x01010101;
        }
        return [settings](std::uint32_t pixel) {
            const int key = curveAt(lumaOf(pixel), settings);
            return pixelOf(key, key, key, channelOf(pixel, 3));
        };
    });
}

}  // namespace
