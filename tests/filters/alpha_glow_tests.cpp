// SPDX-License-Identifier: MIT
#include "filters/warp/alpha_glow_kernels.h"
#include "tests/support/filter_under_test.h"

#include <algorithm>

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

std::ostream& operator<<(std::ostream& out, const Settings& settings) {
    return out << "glow " << settings.glow << ", brightness " << settings.brightness
               << (settings.useEnd ? ", end colour" : "") << (settings.fade ? ", fade" : "");
}

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
    constexpr std::uint32_t glows[] = {1, 2, 3, 7, 25, 100};
    constexpr std::uint32_t brightnesses[] = {1, 20, 128, 254, 255};
    return {glows[random() % std::size(glows)],
            brightnesses[random() % std::size(brightnesses)],
            static_cast<std::uint32_t>(random()) & 0xFFFFFF,
            static_cast<std::uint32_t>(random()) & 0xFFFFFF,
            random() % 2 == 0,
            random() % 2 == 0};
}

/// Random pixels, of which about one in `rarity` is solid and the others are transparent to any degree.
TestFrame frameWithSolidParts(const Geometry& geometry, unsigned rarity, Random& random) {
    Picture picture{geometry.width, geometry.height};
    for (std::uint32_t& pixel : picture.pixels) {
        const std::uint32_t alpha = random() % rarity == 0 ? 248 + random() % 8
                                    : random() % 3 == 0    ? 0
                                                           : random() % 248;
        pixel = (static_cast<std::uint32_t>(random()) & 0xFFFFFF) | alpha << 24;
    }
    return TestFrame(geometry, picture);
}

TEST(AlphaGlow, WorkedRing) {
    // A solid pixel in the middle; its four neighbours glow, the left edge apart.
    Picture picture{9, 3};
    picture.at(6, 1) = 0xFF102030;
    TestFrame source({.width = 9, .height = 3}, picture);
    FilterUnderTest filter(alphaGlowId);
    store(filter, {.glow = 1, .start = 0x00332211});
    const Picture result = filter.rendered(source);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 9; ++x) {
            const bool beside = std::abs(x - 6) + std::abs(y - 1) == 1;
            EXPECT_EQ(result.at(x, y), beside ? 0xFF112233 : picture.at(x, y)) << x << ", " << y;
        }
    }
}

TEST(AlphaGlow, TheLeftEdgeSeesThePixelsToItsRight) {
    // Column 2 is solid: the row itself and the one behind it see it at columns 1 and 0, the one before not.
    Picture picture{8, 3};
    picture.at(2, 1) = 0xFF000000;
    TestFrame source({.width = 8, .height = 3}, picture);
    FilterUnderTest filter(alphaGlowId);
    store(filter, {.glow = 1, .start = 0x00FFFFFF});
    const Picture result = filter.rendered(source);
    const char* expected[] = {"..#.....", "###.....", ".#......"};
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool glows = result.at(x, y) == 0xFFFFFFFF;
            EXPECT_EQ(glows, expected[y][x] == '#' && !(x == 2 && y == 1)) << x << ", " << y;
        }
    }
}

TEST(AlphaGlow, EqualsThePlainVersionOnAnyFrame) {
    Random random(60);
    FilterUnderTest filter(alphaGlowId);
    for (const Geometry& geometry : awkwardGeometries()) {
        for (const unsigned rarity : {2u, 20u, 600u}) {
            TestFrame source = frameWithSolidParts(geometry, rarity, random);
            filter.dropSettings();
            EXPECT_TRUE(samePicture(glowing(source.picture(), {}), filter.rendered(source))) << geometry;
            const Settings settings = randomSettings(random);
            store(filter, settings);
            EXPECT_TRUE(samePicture(glowing(source.picture(), settings), filter.rendered(source)))
                << geometry << ", " << settings;
        }
    }
}

TEST(AlphaGlow, CutsGlowAndBrightnessToSixteenBits) {
    Random random(61);
    FilterUnderTest filter(alphaGlowId);
    TestFrame source = frameWithSolidParts({.width = 150, .height = 20}, 900, random);
    for (const std::uint32_t glow : {0u, 1u, 32767u, 32768u, 65535u, 65536u + 5u, 0xFFFFFFFFu, 0x80000000u}) {
        for (const std::uint32_t brightness :
             {0u, 256u, 257u, 300u, 32767u, 32768u, 65535u, 65536u, 0xFFFFFF00u}) {
            for (const bool fade : {false, true}) {
                const Settings settings{glow, brightness, 0x00123456, 0x00FEDCBA, true, fade};
                store(filter, settings);
                EXPECT_TRUE(samePicture(glowing(source.picture(), settings), filter.rendered(source)))
                    << settings;
            }
        }
    }
}

TEST(AlphaGlow, FramesWithoutAnEdgeStay) {
    Random random(62);
    FilterUnderTest filter(alphaGlowId);
    store(filter, {.glow = 100});
    for (const bool solid : {false, true}) {
        TestFrame source({.width = 130, .height = 9}, random);
        Picture picture = source.picture();
        for (std::uint32_t& pixel : picture.pixels) pixel = solid ? pixel | 0xFF000000 : pixel & 0x7FFFFFFF;
        TestFrame frame({.width = 130, .height = 9}, picture);
        EXPECT_TRUE(samePicture(picture, filter.rendered(frame)));
    }
}

TEST(AlphaGlow, WritesNothingOutsideTheDestination) {
    Random random(63);
    FilterUnderTest filter(alphaGlowId);
    TestFrame source = frameWithSolidParts({.width = 90, .height = 30}, 20, random);
    for (const Geometry& geometry :
         {Geometry{.width = 7, .height = 3}, Geometry{.width = 70, .height = 50},
          Geometry{.width = 90, .height = 30, .negativeRowBytes = true}, Geometry{.width = 0, .height = 4}}) {
        TestFrame destination(geometry, random);
        filter.render(source, destination);
        EXPECT_TRUE(destination.outerGuardsHold()) << geometry;
    }
    TestFrame destination({.width = 90, .height = 30}, random);
    for (const FrameRect bounds :
         {FrameRect{10, 10, -10, -10}, FrameRect{0, 0, 0, 30}, FrameRect{0, 0, 90, 0}}) {
        source.handle()->bounds = bounds;
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold());
    }
}

TEST(AlphaGlowKernels, EverySetEqualsThePlainVersion) {
    Random random(64);
    const auto word = [&] { return MarkWord{random()} << 32 | random(); };
    for (const auto set : runnableInstructionSets()) {
        const AlphaGlowKernels& kernels = alphaGlowKernelsTables.at(set);
        for (int width = 0; width < 300; ++width) {
            const std::size_t words = (static_cast<std::size_t>(width) + 63) / 64;
            std::vector<std::uint8_t> bytes(4 * static_cast<std::size_t>(width) + 96, 0x5A);
            for (auto& byte : bytes)
                byte = static_cast<std::uint8_t>(random() % 2 ? random() : 0xF7 + random() % 2);
            const std::size_t offset = random() % 32;
            const auto pixelAt = [&](int x) {
                std::uint32_t pixel;
                std::memcpy(&pixel, bytes.data() + offset + 4 * x, 4);
                return pixel;
            };
            std::vector<MarkWord> marks(words + 1, 77);
            kernels.markSolid(bytes.data() + offset, marks.data(), width);
            for (int x = 0; x < static_cast<int>(64 * words); ++x) {
                ASSERT_EQ(marks[x / 64] >> x % 64 & 1, x < width && channelOf(pixelAt(x), 3) >= 248) << x;
            }
            ASSERT_EQ(marks[words], 77u);

            for (MarkWord& mark : marks) mark = word() & word();
            const std::uint32_t color = static_cast<std::uint32_t>(random()) & 0xFFFFFF;
            constexpr int opacities[] = {1, 100, 254, 255, 256, 257, 32767, -1, -255, -32768};
            const int opacity = opacities[random() % std::size(opacities)];
            auto expected = bytes;
            for (int x = 0; x < width; ++x) {
                if ((marks[x / 64] >> x % 64 & 1) == 0) continue;
                const std::uint32_t pixel = blended(pixelAt(x), color, opacity);
                std::memcpy(expected.data() + offset + 4 * x, &pixel, 4);
            }
            kernels.blendRow(marks.data(), bytes.data() + offset, width, color, opacity);
            ASSERT_EQ(bytes, expected)
                << instructionSetName(set) << ", width " << width << ", opacity " << opacity;
        }
        for (std::size_t count = 1; count < 40; ++count) {
            std::vector<MarkWord> above(count), row(count + 1), below(count), glow(count), ring(count, 5);
            for (auto* words : {&above, &row, &below, &glow}) {
                for (MarkWord& w : *words) w = word();
            }
            kernels.growRow({above.data(), row.data(), below.data()}, glow.data(), ring.data(), count);
            ASSERT_EQ(ring[0], 5u);
            const auto bit = [](const std::vector<MarkWord>& words, std::size_t i) {
                return static_cast<int>(words[i / 64] >> i % 64 & 1);
            };
            for (std::size_t i = 64; i < 64 * count; ++i) {
                const int sum =
                    bit(above, i) + bit(below, i) + bit(row, i - 1) + bit(row, i) + bit(row, i + 1);
                ASSERT_EQ(bit(ring, i), bit(glow, i) == 0 && sum > 0 && sum < 5) << instructionSetName(set);
            }
            auto solid = row;
            const auto glowBefore = glow;
            EXPECT_TRUE(kernels.addMarks(ring.data(), solid.data(), glow.data(), count));
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(solid[i], row[i] | ring[i]);
                ASSERT_EQ(glow[i], glowBefore[i] | ring[i]);
            }
            std::fill(ring.begin(), ring.end(), 0);
            EXPECT_FALSE(kernels.addMarks(ring.data(), solid.data(), glow.data(), count));
        }
    }
}

}  // namespace
