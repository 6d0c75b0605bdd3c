// SPDX-License-Identifier: MIT
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t alphaGlowId = 10001;

/// Colours carry red in the low byte.
struct Settings {
    std::uint32_t glow, brightness, start, end;
    std::uint8_t useEnd, fade;
};

std::uint32_t blended(std::uint32_t pixel, const int (&redGreenBlue)[3], int opacity) {
    const int alpha = channelOf(pixel, 3);
    const int factor = alpha == 0 ? opacity : (255 - alpha) * opacity >> 8;
    const auto channel = [&](int i) {
        const int from = channelOf(pixel, i), to = redGreenBlue[2 - i] / 65536;
        return factor == 255 ? to : (from + ((to - from) * factor >> 8)) & 0xFF;
    };
    return pixelOf(channel(0), channel(1), channel(2),
                   (alpha == 0 ? opacity : std::max(alpha, opacity)) & 0xFF);
}

/// Both masks have a 1 for each pixel that is solid or glows. Whether the ring has a pixel.
bool addRing(Picture& picture, Picture& solid, Picture& glow, const int (&color)[3], int opacity) {
    const Picture before = solid;
    // Old projects depend on it: the first columns are seen as those to their right.
    const auto moved = [&](int x, int y) {
        return before.nearest(x < 3 && before.width >= 3 ? x + 1 : x, y);
    };
    bool any = false;
    for (int y = 0; y < before.height; ++y) {
        for (int x = 0; x < before.width; ++x) {
            const auto marked = (y == 0 ? before.at(x, y) : moved(x, y - 1)) + before.nearest(x, y + 1) +
                                moved(x - 1, y) + moved(x, y) + moved(x + 1, y);
            if (glow.at(x, y) != 0 || marked == 0 || marked == 5) continue;
            solid.at(x, y) = glow.at(x, y) = 1;
            any = true;
            picture.at(x, y) = blended(picture.at(x, y), color, opacity);
        }
    }
    return any;
}

Picture glowing(Picture picture, const Settings& settings) {
    const int glow = static_cast<std::int16_t>(settings.glow);
    const int opacity = static_cast<std::int16_t>(settings.brightness);
    if (glow == 0 || opacity == 0) return picture;
    Picture solid{picture.width, picture.height}, marked = solid;
    for (std::size_t i = 0; i < picture.pixels.size(); ++i) solid.pixels[i] = picture.pixels[i] >= 0xF8000000;
    const int steps = std::max(glow / 2, 1);
    const std::int64_t full = opacity * 65536LL;
    std::int64_t brightness = full;
    int color[3], colorStep[3]{};
    for (int i = 0; i < 3; ++i) color[i] = channelOf(settings.start, i) * 65536;
    for (int ring = 0; ring < (glow >= 2 ? 2 * steps : 1); ++ring) {
        for (int i = 0; i < 3 && settings.useEnd != 0 && ring % steps == 0; ++i) {
            const int way = channelOf(settings.end, i) * 65536 - color[i];
            const int firstHalf = settings.fade != 0 ? 2 * way / 3 : way / 2;
            colorStep[i] = (ring == 0 ? firstHalf : way) / steps;
        }
        if (settings.fade == 0 && ring > 0 && ring == 2 * steps - 1) brightness = full / 2;
        if (!addRing(picture, solid, marked, color, static_cast<int>(brightness / 65536))) break;
        if (settings.fade != 0) brightness -= full / glow;
        for (int i = 0; i < 3; ++i) color[i] += colorStep[i];
    }
    return picture;
}

TEST(AlphaGlow, EqualsThePlainVersionOnAnyFrame) {
    expectEqualsPlain(alphaGlowId, [](FilterUnderTest& filter, Picture& source, Random& random) {
        // About one pixel in so many is solid, and the others are transparent to any degree.
        constexpr unsigned rarities[] = {1, 2, 20, 600, 0xFFFFFFFF};
        const unsigned rarity = oneOf(rarities, random);
        for (std::uint32_t& pixel : source.pixels) {
            const std::uint32_t transparent = random() % 3 == 0 ? 0x00FFFFFF : 0xF7FFFFFF;
            pixel = random() % rarity == 0 ? pixel | 0xF8000000 : pixel & transparent;
        }
        // Both are cut to sixteen bits with a sign.
        constexpr std::uint32_t glows[] = {1, 2, 3, 7, 25, 100, 32767, 32768, 65536 + 5, 0xFFFFFFFF};
        constexpr std::uint32_t brightnesses[] = {1, 128, 254, 255, 256, 257, 300, 32767, 32768, 65536};
        const auto any = [&] { return static_cast<std::uint32_t>(random()); };
        Settings settings{25, 255, 0x00C0C0C0, 0x00C0C0C0, 0, 1};
        if (random() % 8 != 0) {
            const auto flag = [&] { return static_cast<std::uint8_t>(random() % 2); };
            settings = {oneOf(glows, random), oneOf(brightnesses, random), any(), any(), flag(), flag()};
            filter.setRecord(settings);
        }
        return [settings](const TestFrame& frame) { return glowing(frame.picture(), settings); };
    });
}

}  // namespace
