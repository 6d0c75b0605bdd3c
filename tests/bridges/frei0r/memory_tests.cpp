// SPDX-License-Identifier: GPL-2.0-or-later
// Plug-ins without memory, in a program of its own: operator new is replaced.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"
#include "tests/host/short_memory.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace {

constexpr PictureSize size{31, 17};
constexpr std::uint32_t unwritten = 0xA5A5A5A5;

Picture updateWithoutMemory(const LoadedPlugin& plugin, f0r_instance_t instance, const Picture& source) {
    Picture result(source.size(), unwritten);
    const ShortMemory memory;
    plugin.update(instance, 0, source.data(), result.data());
    return result;
}

TEST(WithoutMemory, UpdatesNeedNone) {
    const std::vector<Picture> clip = randomClip(size, 1);
    for (const char* name : {"vireo_solarize", "vireo_vertical_flip", "vireo_levels", "vireo_color_pass"}) {
        const InitialisedPlugin plugin(pluginFile(name));
        const Reference reference(plugin.info().name);
        const PluginInstance instance(plugin, size.width, size.height);
        EXPECT_EQ(updateWithoutMemory(plugin, instance, clip[0]), reference.frame(clip, size, 0)) << name;
    }
}

TEST(WithoutMemory, FiltersThatNeedSomeStillGiveAPicture) {
    const Picture source = randomClip(size, 1)[0];
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        const PluginInstance instance(plugin, size.width, size.height);
        Picture given = source;
        EXPECT_EQ(std::ranges::count(updateWithoutMemory(plugin, instance, given), unwritten), 0) << file;
        EXPECT_EQ(given, source) << file;
    }
}

TEST(WithoutMemory, NothingStarts) {
    const LoadedPlugin plugin(pluginFile("vireo_bend"));
    {
        const ShortMemory memory;
        EXPECT_EQ(plugin.init(), 0);
    }
    ASSERT_EQ(plugin.init(), 1);
    {
        const ShortMemory memory;
        EXPECT_EQ(plugin.construct(size.width, size.height), nullptr);
    }
    plugin.deinit();
}

}  // namespace
