// SPDX-License-Identifier: GPL-2.0-or-later
// Every plug-in's pictures are those of the engine, at any size, setting and time.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"

#include <gmock/gmock.h>

#include <random>

namespace {

/// Sets the same random values in a plug-in's instance and in the engine, and reads them back.
void setAtRandom(const LoadedPlugin& plugin, f0r_instance_t instance, Reference& reference,
                 std::mt19937& random) {
    int index = 0;
    for (const VireoParameter& parameter : reference.parameters()) {
        const bool isColor = parameter.kind == VireoColor;
        const double range = isColor                          ? 0xFFFFFF
                             : parameter.kind == VireoBoolean ? 1
                                                              : parameter.maximum - parameter.minimum;
        const std::int64_t steps = random() % (static_cast<std::int64_t>(range) + 1);
        reference.set(index, isColor ? steps : steps + static_cast<std::int64_t>(parameter.minimum));
        const auto channel = [steps](int shift) { return static_cast<float>(steps >> shift & 0xFF) / 255; };
        if (isColor) {
            f0r_param_color_t color{channel(16), channel(8), channel(0)}, back{};
            plugin.setParameter(instance, &color, index);
            plugin.getParameter(instance, &back, index);
            EXPECT_THAT((std::vector{back.r, back.g, back.b}),
                        testing::ElementsAre(color.r, color.g, color.b));
        } else {
            plugin.setNumber(instance, index, static_cast<double>(steps) / range);
            EXPECT_EQ(plugin.number(instance, index), static_cast<double>(steps) / range);
        }
        ++index;
    }
}

/// Counts the frames of one clip that differ, or whose source was written to.
int framesThatDiffer(const LoadedPlugin& plugin, f0r_instance_t instance, const Reference& reference,
                     PictureSize size, std::size_t frames) {
    const std::vector<Picture> clip = randomClip(size, frames);
    int differing = 0;
    for (std::size_t number = 0; number < frames; ++number) {
        Picture source = clip[number];
        Picture result(source.size(), 0xA5A5A5A5);
        plugin.update(instance, 0.04 * static_cast<double>(number), source.data(), result.data());
        if (result != reference.frame(clip, size, number) || source != clip[number]) ++differing;
    }
    return differing;
}

TEST(Pictures, AreThoseOfTheEngineUpToTheFiltersLimits) {
    constexpr PictureSize small[] = {{1, 1}, {2, 9}, {61, 47}, {64, 32}},
                          large[] = {{8176, 3}, {8192, 3}, {16400, 2}, {40000, 1}, {2, 32768}};
    std::mt19937 random(7);
    ASSERT_EQ(pluginFiles().size(), 22U);
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        Reference reference(plugin.info().name);
        const auto hold = [&](PictureSize size, std::size_t frames, bool isFresh) {
            SCOPED_TRACE(file.string() + " at " + std::to_string(size.width) + " x " +
                         std::to_string(size.height));
            testing::internal::CaptureStderr();
            const PluginInstance instance(plugin, size.width, size.height);
            const std::string said = testing::internal::GetCapturedStderr();
            const std::string refusal = reference.refusal(size);
            EXPECT_EQ(said, refusal.empty() ? "" : file.stem().string() + ": " + refusal + '\n');
            ASSERT_EQ(instance == nullptr, !refusal.empty());
            if (instance == nullptr) return;
            if (!isFresh) setAtRandom(plugin, instance, reference, random);
            EXPECT_EQ(framesThatDiffer(plugin, instance, reference, size, frames), 0);
        };
        // A fresh instance shows the filter's own settings.
        for (const PictureSize size : large) hold(size, 1, true);
        for (const PictureSize size : small) hold(size, 8, true);
        for (int round = 0; round < 8; ++round) hold(small[round % 4], 8, false);
    }
}

TEST(Pictures, FollowTheClockThatTheTimeParametersDescribe) {
    struct Clock {
        const char* frameRate;
        const char* timeUnit;
        double hostTime;
        std::size_t frame;
    };
    constexpr Clock clocks[] = {
        {"25", "s", 0.36, 9},         {"25", "ms", 360, 9},      {"30000/1001", "s", 0.3003, 9},
        {"30000/1001", "ms", 300, 9}, {"12.5", "0.001", 720, 9}, {"25", "1/90000", 32400, 9},
        {"25", "seconds", -3, 0},     {"25", "s", 0.3799, 9},    {"25", "milliseconds", 0, 0},
        {"", "ms", 5000, 0},
    };
    constexpr PictureSize size{40, 30};
    const std::vector<Picture> clip = randomClip(size, 10);
    const InitialisedPlugin plugin(pluginFile("vireo_horizontal_hold"));
    Reference reference(plugin.info().name);
    std::mt19937 random(8);
    for (const Clock& clock : clocks) {
        const PluginInstance instance(plugin, size.width, size.height);
        plugin.setText(instance, "Frame Rate", clock.frameRate);
        plugin.setText(instance, "Time Unit", clock.timeUnit);
        plugin.setText(instance, "Clip Length", "10");
        setAtRandom(plugin, instance, reference, random);
        Picture result(clip[0].size());
        plugin.update(instance, clock.hostTime, clip[clock.frame].data(), result.data());
        EXPECT_EQ(result, reference.frame(clip, size, clock.frame, 10))
            << clock.frameRate << " / " << clock.timeUnit << " at " << clock.hostTime;
    }
}

TEST(Pictures, OfGhostingTakeTheNearestFrameThatTheHostHandedOver) {
    constexpr PictureSize size{9, 5};
    const InitialisedPlugin plugin(pluginFile("vireo_ghosting"));
    const Reference reference(plugin.info().name);
    const std::vector<Picture> clip = randomClip(size, 40);
    const PluginInstance instance(plugin, size.width, size.height);
    plugin.setText(instance, "Frame Rate", "1");
    // Holds a frame to what the engine makes of it where these are the four before it.
    const auto expectAfter = [&](std::size_t number, std::vector<std::size_t> before) {
        Picture result(clip[0].size());
        plugin.update(instance, static_cast<double>(number), clip[number].data(), result.data());
        std::vector<Picture> seen = clip;
        for (std::size_t i = 0; i < before.size(); ++i) seen[number - before.size() + i] = clip[before[i]];
        EXPECT_EQ(result, reference.frame(seen, size, number)) << number;
    };
    expectAfter(20, {20, 20, 20, 20});
    expectAfter(21, {20, 20, 20, 20});
    expectAfter(22, {20, 20, 20, 21});
    expectAfter(23, {20, 20, 21, 22});
    expectAfter(24, {20, 21, 22, 23});
    // After a jump back nothing is nearer than the frame itself, then than what follows the jump.
    expectAfter(10, {10, 10, 10, 10});
    expectAfter(14, {10, 10, 10, 10});
    expectAfter(11, {10, 10, 10, 10});
}

}  // namespace
