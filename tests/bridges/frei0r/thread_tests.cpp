// SPDX-License-Identifier: GPL-2.0-or-later
// Hosts call plug-ins from any thread. The thread sanitizer watches.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

namespace {

constexpr PictureSize size{33, 21};

void onThreads(const std::function<void(unsigned)>& work) {
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < 4; ++i) threads.emplace_back(work, i);
}

TEST(Threads, RenderWithInstancesOfTheirOwnAndASharedOneAtOnce) {
    const std::vector<Picture> clip = randomClip(size, 8);
    const InitialisedPlugin ghosting(pluginFile("vireo_ghosting"));
    const PluginInstance shared(ghosting, size.width, size.height);
    for (const char* name : {"vireo_bend", "vireo_ghosting", "vireo_levels", "vireo_alpha_glow"}) {
        const InitialisedPlugin plugin(pluginFile(name));
        const Reference reference(plugin.info().name);
        std::vector<Picture> expected;
        for (std::size_t i = 0; i < clip.size(); ++i) expected.push_back(reference.frame(clip, size, i));
        std::atomic<int> wrong{0};
        onThreads([&](unsigned thread) {
            const PluginInstance own(plugin, size.width, size.height);
            Picture result(clip[0].size());
            for (std::size_t i = 0; i < clip.size(); ++i) {
                ghosting.setText(shared, "Clip Length", std::to_string(thread + 1));
                ghosting.update(shared, 0, clip[i].data(), result.data());
                plugin.update(own, 0, clip[i].data(), result.data());
                if (result != expected[i]) ++wrong;
            }
        });
        EXPECT_EQ(wrong, 0) << name;
    }
}

TEST(Threads, StartAndEndPluginsOfOneModule) {
    // Kept loaded: the thread sanitizer does not see the loader's own lock.
    std::vector<LoadedPlugin> plugins;
    for (const auto& file : pluginFiles()) plugins.emplace_back(file);
    std::atomic<int> wrong{0};
    onThreads([&](unsigned thread) {
        for (unsigned i = 0; i < 12; ++i) {
            // Two threads each take the same plug-ins in turn.
            const LoadedPlugin& plugin = plugins[(i + thread / 2 * 5) % plugins.size()];
            if (plugin.init() != 1) ++wrong;
            const PluginInstance instance(plugin, size.width, size.height);
            if (instance == nullptr || plugin.info().num_params < 0) ++wrong;
            plugin.deinit();
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
