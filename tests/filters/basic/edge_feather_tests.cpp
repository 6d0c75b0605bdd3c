// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t edgeFeatherId = 10020;

void scaleAlpha(Picture& picture, int x, int row, int factor) {
    if (x < 0 || x >= picture.width || row < 0 || row >= picture.height) return;
    std::uint32_t& pixel = picture.at(x, row);
    pixel = (pixel & 0x00FFFFFF) | static_cast<std::uint32_t>(channelOf(pixel, 3) * factor / 100) << 24;
}

Picture feathered(Picture picture, int amount, bool fieldMode) {
    const int width = picture.width;
    const int height = picture.height;
    const int n = static_cast<int>(amount * 4.0 / 3.0);
    const int step = fieldMode ? 2 : 1;
    int rows = fieldMode ? n / 2 : n;
    if (amount != 0 && rows == 0) rows = 1;
    for (int k = 0; k < rows; ++k) {
        for (int x = k * step; x < width - k * step; ++x) scaleAlpha(picture, x, k, 100 * (k + 1) / rows);
        for (int x = k * step; x < width - k * step; ++x) {
            scaleAlpha(picture, x, height - 1 - k, 100 * (k + 1) / rows);
        }
    }
    for (int c = 0; c < n; ++c) {
        const int factor = 100 * (c + 1) / n;
        const int r = c / step;
        for (int row = r + 1; row <= height - r - 2; ++row) scaleAlpha(picture, c, row, factor);
        const int run = height - r - ((c + 1) / step + 1);
        for (int i = 0; i < run; ++i) scaleAlpha(picture, width - 1 - c, r + 1 + i, factor);
    }
    return picture;
}

TEST(EdgeFeather, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(edgeFeatherId, [](FilterUnderTest& filter, Picture&, Random& random) {
        constexpr int amounts[] = {-32768, -2, -1, 0, 1, 2, 3, 4, 7, 10, 25, 100, 32767};
        const bool isSet = random() % 8 != 0;
        const int amount = isSet ? oneOf(amounts, random) : 10;
        if (isSet) filter.setSettings({static_cast<std::int16_t>(amount)});
        // In fields where one kind of flag is there alone.
        const auto flags = static_cast<std::uint16_t>(random() % 3 == 0 ? 0 : random());
        filter.invocation.fieldFlags = flags;
        const bool inFields = ((flags & 0x0400) != 0) != ((flags & 0x0B00) != 0);
        return [=](TestFrame& source) { return feathered(source.picture(), amount, inFields); };
    });
}

}  // namespace
