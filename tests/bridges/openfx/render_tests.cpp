// SPDX-License-Identifier: MIT
// What the effects render: the engine's pixels, however the host's images lie.
#include "tests/bridges/openfx/support.h"

#include <cstring>

namespace openfx::test {
namespace {

constexpr int width = 37, height = 23;

std::vector<Plain> clipOf(int frames, VireoDepth depth = VireoDepth8, bool hasAlpha = true,
                          int rows = height) {
    std::vector<Plain> clip;
    for (int i = 0; i < frames; ++i)
        clip.push_back(noise(width, rows, static_cast<std::uint32_t>(i), depth, hasAlpha));
    return clip;
}

class OpenFxPixels : public OpenFx, public testing::WithParamInterface<std::string> {
protected:
    TestHost host;
    DescribedPlugin plugin{pluginNamed(GetParam()), host};
    TestInstance instance{plugin};
    Reference reference{plugin.plugin};
};

TEST_P(OpenFxPixels, AreTheEnginesInEveryDepthAndShape) {
    constexpr std::size_t frame = 9;
    std::uint32_t seed = 0;
    for (const VireoDepth depth : {VireoDepth8, VireoDepth16, VireoDepthFloat}) {
        for (const bool hasAlpha : {true, false}) {
            const auto clip = clipOf(12, depth, hasAlpha);
            for (Lie lie : {Lie{}, Lie{.isTopDown = true}, Lie{.premultiplied = true, .x = -7, .y = 5},
                            Lie{.isTopDown = true, .x = 3, .y = -11, .gap = 5}, Lie{.gap = 2, .margin = 4}}) {
                reference.setAtRandom(instance, ++seed);
                instance.setSource(clip, lie, 100);
                const Plain expected = reference.render(clip, frame, 0, lie.premultiplied);
                ASSERT_EQ(instance.rendered({.time = 100.0 + frame}, lie), expected) << "seed " << seed;
            }
        }
    }
}

TEST_P(OpenFxPixels, FillWindowsWithTheirPartOfThePicture) {
    const auto clip = clipOf(10);
    const Lie lie{.x = 4, .y = -3, .margin = 3};
    reference.setAtRandom(instance, 5);
    instance.setSource(clip, lie);
    const Plain expected = reference.render(clip, 9);
    for (const OfxRectI window : {OfxRectI{4, -3, 41, 7}, OfxRectI{10, 2, 11, 3}, OfxRectI{1, -6, 44, 23}}) {
        TestImage output(noise(width, height, 1), lie);
        ASSERT_EQ(instance.render({.time = 9, .window = window}, output), 0);
        EXPECT_TRUE(output.holdsOutside(window));
        const Plain picture = output.picture();
        for (int y = 0; y < height; ++y) {
            const int row = output.area().y2 - 1 - y;
            const int left = std::max(window.x1, 4) - 4, right = std::min(window.x2, 41) - 4;
            if (row < window.y1 || row >= window.y2) continue;
            ASSERT_EQ(std::memcmp(picture.row(y) + 4 * left, expected.row(y) + 4 * left,
                                  static_cast<std::size_t>(4 * (right - left))),
                      0)
                << "row " << y;
        }
    }
}

TEST_P(OpenFxPixels, OfFieldedClipsAreRenderedByField) {
    for (const int rows : {22, 23}) {
        for (const int y : {0, 1}) {
            for (const bool isUpperFirst : {true, false}) {
                const auto clip = clipOf(12, VireoDepth8, true, rows);
                const Lie lie{.y = y};
                reference.setAtRandom(instance, 3);
                instance.setSource(clip, lie);
                instance.source().properties.put<std::string>(
                    "OfxImageClipPropFieldOrder", {isUpperFirst ? "OfxFieldUpper" : "OfxFieldLower"});
                // Rows with odd numbers from below are the upper field, wherever the picture begins.
                const bool isTopFirst = ((y + rows - 1) % 2 == 1) == isUpperFirst;
                const Plain expected = reference.render(clip, 11, isTopFirst ? 1 : 2);
                ASSERT_EQ(instance.rendered({.time = 11, .field = "OfxFieldBoth"}, lie), expected);
                ASSERT_EQ(instance.rendered({.time = 11}, lie), reference.render(clip, 11));

                TestImage output(expected, lie);
                const Plain before = noise(width, rows, 77);
                TestImage half(before, lie);
                ASSERT_EQ(instance.render({.time = 11, .field = "OfxFieldUpper"}, half), 0);
                const Plain picture = half.picture();
                for (int row = 0; row < rows; ++row) {
                    const bool isUpper = (y + rows - 1 - row) % 2 == 1;
                    const Plain& wanted = isUpper ? expected : before;
                    ASSERT_EQ(std::memcmp(picture.row(row), wanted.row(row), wanted.rowBytes()), 0) << row;
                }
            }
        }
    }
}

TEST_P(OpenFxPixels, OfProxiesAreTheSameInEveryDepthAndWindow) {
    const Lie lie{.x = 2, .y = 1};
    for (const VireoDepth depth : {VireoDepth8, VireoDepth16, VireoDepthFloat}) {
        // Of grey levels that need no dither all depths have the same.
        Plain bytes = noise(width, height, 6), picture(width, height, depth, true);
        for (std::size_t i = 0; i < bytes.bytes.size(); ++i) {
            const std::uint8_t level = bytes.bytes[i] = bytes.bytes[i / 4 * 4];
            const auto word = static_cast<std::uint16_t>(level * 257);
            const float number = static_cast<float>(level) / 255;
            const std::size_t size = picture.bytes.size() / bytes.bytes.size();
            const void* const from = depth == VireoDepth8    ? static_cast<const void*>(&level)
                                     : depth == VireoDepth16 ? static_cast<const void*>(&word)
                                                             : &number;
            std::memcpy(&picture.bytes[i * size], from, size);
        }
        instance.setSource({bytes}, lie);
        const RenderCall call{.scaleX = 0.5, .scaleY = 0.4};
        const Plain expected = instance.rendered(call, lie);
        instance.setSource({picture}, lie);
        RenderCall part = call;
        part.window = {5, 3, 20, 9};
        TestImage output(noise(width, height, 1, depth), lie);
        ASSERT_EQ(instance.render(part, output), 0);
        EXPECT_TRUE(output.holdsOutside(part.window));
        const Plain whole = instance.rendered(call, lie), window = output.picture();
        for (int row = 0; row < height; ++row) {
            const int y = lie.y + height - 1 - row;
            if (y < part.window.y1 || y >= part.window.y2) continue;
            const std::size_t left = 3 * whole.pixelBytes(), length = 15 * whole.pixelBytes();
            ASSERT_EQ(std::memcmp(window.row(row) + left, whole.row(row) + left, length), 0) << row;
        }
        if (depth == VireoDepth16) {
            for (std::size_t i = 0; i < expected.bytes.size(); ++i) {
                std::uint16_t sample = 0;
                std::memcpy(&sample, &whole.bytes[2 * i], sizeof sample);
                ASSERT_NEAR(sample / 257.0, expected.bytes[i], 0.51);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Effects, OpenFxPixels, testing::ValuesIn(effectKeys()),
                         [](const auto& tested) { return tested.param; });

class OpenFxSettings : public OpenFx {};

TEST_F(OpenFxSettings, FollowKeyFramesAndMix) {
    TestHost host;
    DescribedPlugin plugin(pluginNamed("Solarize"), host);
    TestInstance instance(plugin);
    Reference reference(plugin.plugin);
    const auto clip = clipOf(11);
    instance.setSource(clip, {});
    reference.set(instance, 0, 75);
    instance.set("Threshold", {50, 0, 0}, 0);
    instance.set("Threshold", {100, 0, 0}, 10);
    EXPECT_EQ(instance.rendered({.time = 5}, {}), reference.render(clip, 5));

    instance.set("Mix", {50, 0, 0});
    const Plain whole = reference.render(clip, 5), half = instance.rendered({.time = 5}, {});
    int farthest = 0;
    for (std::size_t i = 0; i < half.bytes.size(); ++i)
        farthest = std::max(farthest, std::abs(2 * half.bytes[i] - whole.bytes[i] - clip[5].bytes[i]));
    EXPECT_LE(farthest, 2);
    EXPECT_NE(half, whole);
}

TEST_F(OpenFxSettings, AreTheFiltersOwnWhereTheHostHasNone) {
    for (const HostTraits& traits : {HostTraits{.findsParameters = false}, HostTraits{.hasValues = false}}) {
        TestHost host(traits);
        DescribedPlugin plugin(pluginNamed("AlphaGlow"), host);
        TestInstance instance(plugin);
        const auto clip = clipOf(1);
        instance.setSource(clip, {});
        EXPECT_EQ(instance.rendered({}, {}), Reference(plugin.plugin).render(clip, 0));
    }
}

}  // namespace
}  // namespace openfx::test
