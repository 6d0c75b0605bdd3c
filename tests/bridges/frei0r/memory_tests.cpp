// SPDX-License-Identifier: GPL-2.0-or-later
// Plug-ins without memory, in a program of its own: operator new is replaced.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"
#include "tests/host/short_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>

namespace {

constexpr PictureSize size{31, 17};
constexpr std::uint32_t unwritten = 0xA5A5A5A5;

TEST(WithoutMemory, EveryFilterStillGivesAPicture) {
    const std::vector<Picture> clip = randomClip(size, 1);
    for (const auto& file : pluginFiles()) {
        const InitialisedPlugin plugin(file);
        const PluginInstance instance(plugin, size.width, size.height);
        Picture given = clip[0], result(given.size(), unwritten);
        {
            const ShortMemory memory;
            plugin.update(instance, 0, given.data(), result.data());
        }
        EXPECT_EQ(std::ranges::count(result, unwritten), 0) << file;
        EXPECT_EQ(given, clip[0]) << file;
        constexpr std::string_view needNone[] = {"vireo_solarize", "vireo_vertical_flip", "vireo_levels",
                                                 "vireo_color_pass"};
        if (std::ranges::count(needNone, file.stem()) == 0) continue;
        EXPECT_EQ(result, Reference(plugin.info().name).frame(clip, size, 0)) << file;
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
