// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t edgeFeatherId = 10020;

Picture feathered(Picture picture, int amount, int step) {
    const int width = picture.width, height = picture.height;
    const auto fade = [&](int x, int row, unsigned percent) {
        if (x < 0 || x >= width || row < 0 || row >= height) return;
        std::uint32_t& pixel = picture.at(x, row);
        pixel = (pixel & 0x00FFFFFF) | (pixel >> 24) * percent / 100 << 24;
    };
    const int columns = amount * 4 / 3, rows = std::max(columns / step, 1);
    for (int k = 0; k < rows && amount > 0; ++k) {
        for (int x = k * step; x < width - k * step; ++x) {
            fade(x, k, 100 * (k + 1) / rows);
            fade(x, height - 1 - k, 100 * (k + 1) / rows);
        }
    }
    for (int k = 0; k < columns; ++k) {
        const int percent = 100 * (k + 1) / columns, inset = k / step + 1;
        for (int row = inset; row < height - inset; ++row) fade(k, row, percent);
        for (int row = inset; row < height - (k + 1) / step; ++row) fade(width - 1 - k, row, percent);
    }
    return picture;
}

TEST(EdgeFeather, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(edgeFeatherId, [](FilterUnderTest& filter, Picture&, Random& random) {
        constexpr int amounts[] = {-32768, -2, -1, 0, 1, 2, 3, 4, 7, 10, 25, 100, 32767};
        const bool isSet = random() % 8 != 0;
        const int amount = isSet ? oneOf(amounts, random) : 10;
        if (isSet) filter.setSettings({static_cast<std::int16_t>(amount)});
        const PlainSteps steps = plainSteps(filter.invocation.fieldFlags);
        return [amount, step = std::max(steps.x, steps.y)](const TestFrame& source) {
            return feathered(source.picture(), amount, step);
        };
    });
}

}  // namespace
