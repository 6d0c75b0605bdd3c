// SPDX-License-Identifier: MIT
#include "filters/warp/extract.h"
#include "tests/support/test_frame.h"

#include <algorithm>

namespace {

/// Each entry by itself, for settings in their ranges.
int curveAt(int entry, const Extract::Settings& settings) {
    const int soft = (settings.high - settings.low) * settings.softness / 200;
    const auto clamped = [](int value) { return std::clamp(value, 0, 255); };
    const int riseBegin = clamped(settings.low - soft), riseEnd = clamped(settings.low + soft);
    const int fallBegin = clamped(settings.high - soft), fallEnd = clamped(settings.high + soft);
    int value = 0;
    if (entry >= fallEnd) {
        value = 0;
    } else if (entry >= fallBegin) {
        value = (255 * (fallEnd - fallBegin) - 255 * (entry - fallBegin)) / (2 * soft);
    } else if (entry >= riseEnd) {
        value = 255;
    } else if (entry >= riseBegin) {
        value = 255 * (entry - riseBegin) / (2 * soft);
    }
    return settings.invert != 0 ? 255 - value : value;
}

Extract::Settings randomSettings(Random& random) {
    const auto below = [&](unsigned limit) { return static_cast<std::uint16_t>(random() % limit); };
    const std::uint16_t high = below(256);
    return {below(high + 1u), high, below(101), static_cast<std::uint8_t>(below(2))};
}

TEST(ExtractCurve, EqualsThePlainVersion) {
    Random random(30);
    for (int turn = 0; turn < 2000; ++turn) {
        const auto settings = randomSettings(random);
        const auto curve = Extract::transferCurve(settings);
        for (int entry = 0; entry < 256; ++entry) {
            ASSERT_EQ(curve[static_cast<std::size_t>(entry)], curveAt(entry, settings))
                << settings.low << ' ' << settings.high << ' ' << settings.softness << " at " << entry;
        }
    }
}

}  // namespace
