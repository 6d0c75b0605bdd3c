// SPDX-License-Identifier: GPL-2.0-or-later
// Every plug-in's pictures are those of the module, at any size, setting and time.
#include "host/hosting/filter_traits.h"
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference_render.h"

#include <gmock/gmock.h>

#include <random>

namespace {

/// Sets the same random value in a plug-in's instance and in the module's.
class RandomSettings {
public:
    RandomSettings(const LoadedPlugin& plugin, const hosting::PropertyList& list)
        : plugin_(plugin), list_(list) {}

    void apply(f0r_instance_t instance, const hosting::FilterInstance& reference) {
        int index = 0;
        for (const hosting::Parameter& parameter : list_.parameters)
            set(instance, reference, parameter, index++);
    }

private:
    void set(f0r_instance_t instance, const hosting::FilterInstance& reference,
             const hosting::Parameter& parameter, int index) {
        switch (parameter.kind) {
            case hosting::ParameterKind::Boolean: {
                const std::int64_t value = upTo(1);
                plugin_.setNumber(instance, index, static_cast<double>(value));
                writeValue(reference, parameter, value);
                break;
            }
            case hosting::ParameterKind::Color: {
                const std::int64_t red = upTo(255), green = upTo(255), blue = upTo(255);
                f0r_param_color_t color{static_cast<float>(red) / 255, static_cast<float>(green) / 255,
                                        static_cast<float>(blue) / 255};
                plugin_.setParameter(instance, &color, index);
                writeValue(reference, parameter, red | green << 8 | blue << 16);
                break;
            }
            case hosting::ParameterKind::Number: {
                const double range = parameter.maximum - parameter.minimum;
                const std::int64_t steps = upTo(static_cast<std::int64_t>(range));
                plugin_.setNumber(instance, index, static_cast<double>(steps) / range);
                writeValue(reference, parameter, static_cast<std::int64_t>(parameter.minimum) + steps);
                break;
            }
        }
    }

    std::int64_t upTo(std::int64_t largest) {
        return std::uniform_int_distribution<std::int64_t>(0, largest)(random_);
    }

    const LoadedPlugin& plugin_;
    const hosting::PropertyList& list_;
    std::mt19937 random_{7};
};

/// Counts the frames of one clip that differ, or whose source was written to.
int framesThatDiffer(const LoadedPlugin& plugin, f0r_instance_t instance,
                     const hosting::FilterInstance& reference, PictureSize size, std::size_t frames) {
    const std::vector<Picture> clip = randomClip(size, frames);
    int differing = 0;
    for (std::size_t number = 0; number < frames; ++number) {
        Picture source = clip[number];
        Picture result(source.size(), 0xA5A5A5A5);
        plugin.update(instance, 0.04 * static_cast<double>(number), source.data(), result.data());
        const bool equal = result == referenceFrame(reference, clip, size, number, 0);
        if (!equal || source != clip[number]) ++differing;
    }
    return differing;
}

TEST(Pictures, AreThoseOfTheModule) {
    constexpr int rounds = 12;
    constexpr PictureSize sizes[] = {{1, 1}, {2, 9}, {61, 47}, {64, 32}};
    const auto module = testedModule();
    ASSERT_EQ(pluginFiles().size(), module->filters().size());
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        const hosting::Filter& filter = filterOf(*module, plugin.info().name);
        RandomSettings settings(plugin, filter.properties);
        for (int round = 0; round < rounds; ++round) {
            const PictureSize size = sizes[round % std::size(sizes)];
            const hosting::FilterInstance reference(filter.entry);
            const f0r_instance_t instance = plugin.construct(size.width, size.height);
            ASSERT_NE(instance, nullptr);
            // A fresh instance shows the filter's own settings.
            if (round >= static_cast<int>(std::size(sizes))) settings.apply(instance, reference);
            EXPECT_EQ(framesThatDiffer(plugin, instance, reference, size, 8), 0)
                << file << " at " << size.width << " x " << size.height << " in round " << round;
            plugin.destruct(instance);
        }
    }
}

TEST(Pictures, AreThoseOfTheModuleUpToTheFiltersLimits) {
    constexpr PictureSize sizes[] = {{8191, 3}, {8192, 3}, {16400, 2}, {40000, 1}, {2, 32768}};
    const auto module = testedModule();
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        const hosting::Filter& filter = filterOf(*module, plugin.info().name);
        const hosting::FrameLimits limits = hosting::filterTraits(filter.properties.matchName).limits;
        const hosting::FilterInstance reference(filter.entry);
        for (const PictureSize size : sizes) {
            testing::internal::CaptureStderr();
            const f0r_instance_t instance = plugin.construct(size.width, size.height);
            const std::string said = testing::internal::GetCapturedStderr();
            const std::string refusal =
                hosting::frameRefusal(filter.properties.name, limits, static_cast<int>(size.width),
                                      static_cast<int>(size.height), std::int64_t{4} * size.width);
            ASSERT_EQ(instance == nullptr, !refusal.empty()) << file << ": " << said;
            EXPECT_EQ(said, refusal.empty() ? "" : file.stem().string() + ": " + refusal + '\n');
            if (instance == nullptr) continue;
            EXPECT_EQ(framesThatDiffer(plugin, instance, reference, size, 1), 0)
                << file << " at " << size.width << " x " << size.height;
            plugin.destruct(instance);
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
    const auto module = testedModule();
    const std::vector<Picture> clip = randomClip(size, 10);
    for (const char* name : {"vireo_bend", "vireo_horizontal_hold", "vireo_vertical_hold"}) {
        const InitialisedPlugin plugin(pluginFile(name));
        const hosting::FilterInstance reference(filterOf(*module, plugin.info().name).entry);
        for (const Clock& clock : clocks) {
            const f0r_instance_t instance = plugin.construct(size.width, size.height);
            plugin.setText(instance, "Frame Rate", clock.frameRate);
            plugin.setText(instance, "Time Unit", clock.timeUnit);
            plugin.setText(instance, "Clip Length", "10");
            Picture result(clip[0].size());
            plugin.update(instance, clock.hostTime, clip[clock.frame].data(), result.data());
            EXPECT_EQ(result, referenceFrame(reference, clip, size, clock.frame, 10))
                << name << ": " << clock.frameRate << " / " << clock.timeUnit << " at " << clock.hostTime;
            plugin.destruct(instance);
        }
    }
}

TEST(Pictures, OfGhostingTakeTheNearestFrameThatTheHostHandedOver) {
    constexpr PictureSize size{9, 5};
    const auto module = testedModule();
    const InitialisedPlugin plugin(pluginFile("vireo_ghosting"));
    const hosting::FilterInstance reference(filterOf(*module, plugin.info().name).entry);
    const std::vector<Picture> clip = randomClip(size, 40);
    const f0r_instance_t instance = plugin.construct(size.width, size.height);
    plugin.setText(instance, "Frame Rate", "1");
    const auto show = [&](std::size_t number) {
        Picture result(clip[0].size());
        plugin.update(instance, static_cast<double>(number), clip[number].data(), result.data());
        return result;
    };
    const auto withHistory = [&](std::size_t number, std::vector<std::size_t> nearest) {
        std::vector<Picture> seen = clip;
        for (std::size_t i = 0; i < nearest.size(); ++i) seen[number - nearest.size() + i] = clip[nearest[i]];
        return referenceFrame(reference, seen, size, number, 0);
    };
    for (std::size_t number = 20; number < 25; ++number) show(number);
    EXPECT_EQ(show(25), referenceFrame(reference, clip, size, 25, 0));
    // After a jump back nothing is nearer than the frame itself, then than what follows the jump.
    EXPECT_EQ(show(10), withHistory(10, {10, 10, 10, 10}));
    EXPECT_EQ(show(11), withHistory(11, {10, 10, 10, 10}));
    show(12);
    show(13);
    EXPECT_EQ(show(14), referenceFrame(reference, clip, size, 14, 0));
    plugin.destruct(instance);
}

}  // namespace
