// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t alphaGlowId = 10001;

struct Settings {
    std::uint32_t glow = 25;
    std::uint32_t brightness = 255;
    std::uint32_t start = 0x00C0C0C0;
    std::uint32_t end = 0x00C0C0C0;
    bool useEnd = false;
    bool fade = true;
};

std::uint32_t blended(std::uint32_t pixel, std::uint32_t color, int opacity) {
    const int alpha = channelOf(pixel, 3);
    const int factor = alpha == 0 ? opacity : ((255 - alpha) * opacity) >> 8;
    const int newAlpha = alpha == 0 ? opacity : std::max(alpha, opacity);
    const auto channel = [&](int i) {
        const int from = channelOf(pixel, i), to = channelOf(color, i);
        return factor == 255 ? to : (from + (((to - from) * factor) >> 8)) & 0xFF;
    };
    return pixelOf(channel(0), channel(1), channel(2), newAlpha & 0xFF);
}

/// A byte for each pixel, 31 where it is marked.
struct Mask {
    int width, height;
    std::vector<std::uint8_t> bytes =
        std::vector<std::uint8_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));

    std::uint8_t& at(int x, int y) { return bytes[static_cast<std::size_t>(y) * width + x]; }
    /// A copy of a row with room on both sides; its pixel 0 stands at index 1.
    std::vector<std::uint8_t> row(int y) {
        std::vector<std::uint8_t> copy(static_cast<std::size_t>(width) + 8);
        for (int x = 0; x < width; ++x) copy[static_cast<std::size_t>(x) + 1] = at(x, y);
        return copy;
    }
};

void repeatEdges(std::vector<std::uint8_t>& row, int width) {
    row[static_cast<std::size_t>(width) + 1] = row[static_cast<std::size_t>(width)];
    // Four bytes are copied, so that the first columns move along.
    for (int i = 0; i < (width < 3 ? 1 : 4); ++i) row[i] = row[i + 1];
}

/// One ring, a pixel at a time over three rolling rows. Whether it has a pixel.
bool addRing(Picture& picture, Mask& solid, Mask& glow, std::uint32_t color, int opacity) {
    bool any = false;
    auto above = solid.row(0), row = solid.row(0);
    for (int y = 0; y < solid.height; ++y) {
        auto below = solid.row(std::min(y + 1, solid.height - 1));
        repeatEdges(row, solid.width);
        for (int x = 0; x < solid.width; ++x) {
            if (glow.at(x, y) != 0) continue;
            const int i = x + 1;
            const int sum = above[i] + below[i] + row[i - 1] + row[i] + row[i + 1];
            if (sum == 0 || sum >= 128) continue;
            solid.at(x, y) = glow.at(x, y) = 31;
            any = true;
            if (opacity != 0) picture.at(x, y) = blended(picture.at(x, y), color, opacity);
        }
        above = std::move(row);
        row = std::move(below);
    }
    return any;
}

Picture glowing(Picture picture, const Settings& settings) {
    const int glow = static_cast<std::int16_t>(settings.glow);
    const int opacity = static_cast<std::int16_t>(settings.brightness);
    if (glow == 0 || opacity == 0) return picture;
    Mask solid{picture.width, picture.height}, marked{picture.width, picture.height};
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) {
        if (channelOf(picture.pixels[i], 3) >= 248) solid.bytes[i] = 31;
    }
    const int steps = glow > 1 ? glow / 2 : 1;
    const std::int64_t full = opacity * 65536LL;
    const std::int64_t fade = settings.fade ? full / glow : 0;
    int color[3], colorStep[3]{};
    for (int i = 0; i < 3; ++i) color[i] = channelOf(settings.start, i) * 65536;
    std::int64_t brightness = full;
    for (int pass = 0; pass < (glow >= 2 ? 2 : 1); ++pass) {
        for (int i = 0; settings.useEnd && i < 3; ++i) {
            const int end = channelOf(settings.end, i) * 65536;
            const int middle =
                settings.fade ? color[i] + 2 * (end - color[i]) / 3 : color[i] - (color[i] - end) / 2;
            colorStep[i] = (color[i] - (pass == 0 ? middle : end)) / steps;
        }
        for (int step = 0; step < steps; ++step) {
            if (!settings.fade && pass == 1 && step == steps - 1) brightness = full / 2;
            const std::uint32_t pixel = pixelOf(color[2] / 65536, color[1] / 65536, color[0] / 65536, 0);
            if (!addRing(picture, solid, marked, pixel, static_cast<int>(brightness / 65536))) return picture;
            brightness -= fade;
            for (int i = 0; i < 3; ++i) color[i] -= colorStep[i];
        }
    }
    return picture;
}

void store(FilterUnderTest& filter, const Settings& settings) {
    auto bytes = littleEndian({settings.glow, settings.brightness, settings.start, settings.end});
    bytes.push_back(settings.useEnd ? 1 : 0);
    bytes.push_back(settings.fade ? 255 : 0);
    bytes.resize(20);
    filter.setSettings(bytes);
}

Settings randomSettings(Random& random) {
    // Both are cut to sixteen bits with a sign.
    constexpr std::uint32_t glows[] = {1, 2, 3, 7, 25, 100, 32767, 32768, 65536u + 5, 0xFFFFFFFF, 0x80000000};
    constexpr std::uint32_t brightnesses[] = {1,   20,    128,   254,   255,   256,       257,
                                              300, 32767, 32768, 65535, 65536, 0xFFFFFF00};
    const auto color = [&] { return static_cast<std::uint32_t>(random()) & 0xFFFFFF; };
    return {oneOf(glows, random), oneOf(brightnesses, random), color(), color(), random() % 2 == 0,
            random() % 2 == 0};
}

TEST(AlphaGlow, EqualsThePlainVersionOnAnyFrame) {
    const Choice<PlainFilter> choose = [](FilterUnderTest& filter, Picture& source, Random& random) {
        // About one pixel in so many is solid, and the others are transparent to any degree.
        constexpr unsigned rarities[] = {1, 2, 20, 600, 0xFFFFFFFF};
        const unsigned rarity = oneOf(rarities, random);
        for (std::uint32_t& pixel : source.pixels) {
            const std::uint32_t alpha = random() % rarity == 0 ? 248 + random() % 8
                                        : random() % 3 == 0    ? 0
                                                               : random() % 248;
            pixel = (pixel & 0xFFFFFF) | alpha << 24;
        }
        Settings settings;
        if (random() % 8 != 0) {
            settings = randomSettings(random);
            store(filter, settings);
        }
        return [settings](TestFrame& frame) { return glowing(frame.picture(), settings); };
    };
    expectEqualsPlain(alphaGlowId, choose);
    expectEqualsPlain(alphaGlowId, choose);
}

}  // namespace
