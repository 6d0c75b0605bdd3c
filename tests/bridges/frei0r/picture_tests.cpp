// SPDX-License-Identifier: GPL-2.0-or-later
// Every plug-in's pictures are those of the engine, at any size, setting and time.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"

#include <gmock/gmock.h>

#include <random>

namespace {

/// Sets the same random values in a plug-in's instance and in the engine.
void setAtRandom(const LoadedPlugin& plugin, f0r_instance_t instance, Reference& reference,
                 std::mt19937& random) {
    int index = 0;
    for (const VireoParameter& parameter : reference.parameters()) {
        const double range = parameter.kind == VireoColor     ? 0xFFFFFF
                             : parameter.kind == VireoBoolean ? 1
                                                              : parameter.maximum - parameter.minimum;
        const auto steps =
            std::uniform_int_distribution<std::int64_t>(0, static_cast<std::int64_t>(range))(random);
        reference.set(index, steps + static_cast<std::int64_t>(parameter.minimum));
        if (parameter.kind == VireoColor) {
            const auto channel = [steps](int shift) {
                return static_cast<float>(steps >> shift & 0xFF) / 255;
            };
            f0r_param_color_t color{channel(16), channel(8), channel(0)};
            plugin.setParameter(instance, &color, index++);
        } else {
            plugin.setNumber(instance, index++, static_cast<double>(steps) / range);
        }
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
        const bool equal = result == reference.frame(clip, size, number);
        if (!equal || source != clip[number]) ++differing;
    }
    return differing;
}

TEST(Pictures, AreThoseOfTheEngine) {
    constexpr PictureSize sizes[] = {{1, 1}, {2, 9}, {61, 47}, {64, 32}};
    std::mt19937 random(7);
    ASSERT_EQ(pluginFiles().size(), 22U);
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        Reference reference(plugin.info().name);
        for (int round = 0; round < 12; ++round) {
            const PictureSize size = sizes[round % std::size(sizes)];
            const PluginInstance instance(plugin, size.width, size.height);
            ASSERT_NE(instance, nullptr);
            // A fresh instance shows the filter's own settings.
            if (round >= static_cast<int>(std::size(sizes))) setAtRandom(plugin, instance, reference, random);
            EXPECT_EQ(framesThatDiffer(plugin, instance, reference, size, 8), 0)
                << file << " at " << size.width << " x " << size.height << " in round " << round;
        }
    }
}

TEST(Pictures, AreThoseOfTheEngineUpToTheFiltersLimits) {
    constexpr PictureSize sizes[] = {{8176, 3}, {8192, 3}, {16400, 2}, {40000, 1}, {2, 32768}};
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        const Reference reference(plugin.info().name);
        for (const PictureSize size : sizes) {
            testing::internal::CaptureStderr();
            const PluginInstance instance(plugin, size.width, size.height);
            const std::string said = testing::internal::GetCapturedStderr();
            const std::string refusal = reference.refusal(size);
            ASSERT_EQ(instance == nullptr, !refusal.empty()) << file << ": " << said;
            EXPECT_EQ(said, refusal.empty() ? "" : file.stem().string() + ": " + refusal + '\n');
            if (instance == nullptr) continue;
            EXPECT_EQ(framesThatDiffer(plugin, instance, reference, size, 1), 0)
                << file << " at " << size.width << " x " << size.height;
        }
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
    for (const char* name : {"vireo_bend", "vireo_horizontal_hold", "vireo_vertical_hold"}) {
        const InitialisedPlugin plugin(pluginFile(name));
        const Reference reference(plugin.info().name);
        for (const Clock& clock : clocks) {
            const PluginInstance instance(plugin, size.width, size.height);
            plugin.setText(instance, "Frame Rate", clock.frameRate);
            plugin.setText(instance, "Time Unit", clock.timeUnit);
            plugin.setText(instance, "Clip Length", "10");
            Picture result(clip[0].size());
            plugin.update(instance, clock.hostTime, clip[clock.frame].data(), result.data());
            EXPECT_EQ(result, reference.frame(clip, size, clock.frame, 10))
                << name << ": " << clock.frameRate << " / " << clock.timeUnit << " at " << clock.hostTime;
        }
    }
}

TEST(Pictures, OfGhostingTakeTheNearestFrameThatTheHostHandedOver) {
    constexpr PictureSize size{9, 5};
    const InitialisedPlugin plugin(pluginFile("vireo_ghosting"));
    const Reference reference(plugin.info().name);
    const std::vector<Picture> clip = randomClip(size, 40);
    const PluginInstance instance(plugin, size.width, size.height);
    plugin.setText(instance, "Frame Rate", "1");
    const auto show = [&](std::size_t number) {
        Picture result(clip[0].size());
        plugin.update(instance, static_cast<double>(number), clip[number].data(), result.data());
        return result;
    };
    const auto withHistory = [&](std::size_t number, std::vector<std::size_t> nearest) {
        std::vector<Picture> seen = clip;
        for (std::size_t i = 0; i < nearest.size(); ++i) seen[number - nearest.size() + i] = clip[nearest[i]];
        return reference.frame(seen, size, number);
    };
    for (std::size_t number = 20; number < 25; ++number) show(number);
    EXPECT_EQ(show(25), reference.frame(clip, size, 25));
    // After a jump back nothing is nearer than the frame itself, then than what follows the jump.
    EXPECT_EQ(show(10), withHistory(10, {10, 10, 10, 10}));
    EXPECT_EQ(show(11), withHistory(11, {10, 10, 10, 10}));
    show(12);
    show(13);
    EXPECT_EQ(show(14), reference.frame(clip, size, 14));
}

}  // namespace
