// SPDX-License-Identifier: GPL-2.0-or-later
// Hosts call plug-ins from any thread. The thread sanitizer watches.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <thread>

namespace {

constexpr int threadCount = 4;
constexpr PictureSize size{33, 21};

void onThreads(const std::function<void(int)>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) threads.emplace_back(work, i);
    for (std::thread& thread : threads) thread.join();
}

TEST(Threads, RenderInstancesOfTheirOwnAtOnce) {
    const std::vector<Picture> clip = randomClip(size, 8);
    for (const char* name : {"vireo_bend", "vireo_ghosting", "vireo_levels", "vireo_alpha_glow"}) {
        const InitialisedPlugin plugin(pluginFile(name));
        const Reference reference(plugin.info().name);
        std::vector<Picture> expected;
        for (std::size_t i = 0; i < clip.size(); ++i) {
            expected.push_back(reference.frame(clip, size, i));
        }
        std::atomic<int> wrong{0};
        onThreads([&](int) {
            const PluginInstance instance(plugin, size.width, size.height);
            Picture result(clip[0].size());
            for (std::size_t i = 0; i < clip.size(); ++i) {
                plugin.update(instance, 0, clip[i].data(), result.data());
                if (result != expected[i]) ++wrong;
            }
        });
        EXPECT_EQ(wrong, 0) << name;
    }
}

TEST(Threads, ShareOneInstance) {
    const std::vector<Picture> clip = randomClip(size, 8);
    const InitialisedPlugin plugin(pluginFile("vireo_ghosting"));
    const PluginInstance instance(plugin, size.width, size.height);
    onThreads([&](int thread) {
        Picture result(clip[0].size());
        for (const Picture& source : clip) {
            plugin.setText(instance, "Clip Length", std::to_string(thread + 1));
            plugin.update(instance, 0, source.data(), result.data());
        }
    });
}

TEST(Threads, StartAndEndPluginsOfOneModule) {
    // Kept loaded: the thread sanitizer does not see the loader's own lock.
    std::vector<LoadedPlugin> plugins;
    for (const auto& file : pluginFiles()) plugins.emplace_back(file);
    std::atomic<int> wrong{0};
    onThreads([&](int thread) {
        for (std::size_t i = 0; i < 12; ++i) {
            // Two threads each take the same plug-ins in turn.
            const LoadedPlugin& plugin =
                plugins[(i + static_cast<std::size_t>(thread / 2) * 5) % plugins.size()];
            if (plugin.init() != 1) ++wrong;
            const PluginInstance instance(plugin, size.width, size.height);
            if (instance == nullptr || plugin.info().num_params < 0) ++wrong;
            plugin.deinit();
        }
    });
    EXPECT_EQ(wrong, 0);
}

}  // namespace
