// SPDX-License-Identifier: GPL-2.0-or-later
// Orders of calls that hosts really make, and some that none should. The sanitizers watch.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"

#include <dlfcn.h>
#include <gmock/gmock.h>

namespace {

bool moduleIsLoaded() {
    void* const handle = dlopen(VIREO_TESTED_MODULE, RTLD_NOW | RTLD_NOLOAD);
    return handle != nullptr && dlclose(handle) == 0;
}

/// A folder that goes with the object.
class EmptyFolder {
public:
    EmptyFolder() {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path);
    }
    EmptyFolder(const EmptyFolder&) = delete;
    EmptyFolder& operator=(const EmptyFolder&) = delete;
    ~EmptyFolder() { std::filesystem::remove_all(path); }

    const std::filesystem::path path = std::filesystem::path(testing::TempDir()) / "stray-plugin";
};

TEST(Lifetime, APluginLinkedIntoAnotherFolderStarts) {
    const EmptyFolder folder;
    std::filesystem::create_symlink(pluginFile("vireo_levels"), folder.path / "plugin.so");
    const InitialisedPlugin plugin(folder.path / "plugin.so");
    EXPECT_STREQ(plugin.info().name, "Vireo Levels");
}

TEST(Lifetime, APluginThatIsAloneSaysWhatItMissesAndDoesNothing) {
    if (std::filesystem::exists(VIREO_INSTALLED_FOLDER))
        GTEST_SKIP() << "it would find the installed filters";
    const EmptyFolder folder;
    std::filesystem::copy_file(pluginFile("vireo_levels"), folder.path / "plugin.so");
    const LoadedPlugin plugin(folder.path / "plugin.so");
    testing::internal::CaptureStderr();
    EXPECT_EQ(plugin.init(), 0);
    EXPECT_THAT(
        testing::internal::GetCapturedStderr(),
        testing::MatchesRegex("vireo_levels: there is no libvireo_frei0r.so near .*stray-plugin or .*\n"));
    EXPECT_EQ(plugin.info().plugin_type, F0R_PLUGIN_TYPE_FILTER);
    EXPECT_EQ(plugin.info().num_params, 0);
    EXPECT_EQ(plugin.construct(8, 8), nullptr);
    std::uint32_t pixels[64] = {};
    double value = 0;
    plugin.update(nullptr, 0, pixels, pixels);
    plugin.setParameter(nullptr, &value, 0);
    plugin.getParameter(nullptr, &value, 0);
    plugin.destruct(nullptr);
    plugin.deinit();
}

TEST(Lifetime, StartsAreCountedAndInstancesOutliveTheLastEnd) {
    constexpr PictureSize size{16, 9};
    const std::vector<Picture> clip = randomClip(size, 1);
    const LoadedPlugin plugin(pluginFile("vireo_vertical_flip"));
    EXPECT_STREQ(plugin.info().name, "vireo_vertical_flip");
    EXPECT_EQ(plugin.construct(8, 8), nullptr);
    plugin.deinit();
    ASSERT_EQ(plugin.init(), 1);
    ASSERT_EQ(plugin.init(), 1);
    plugin.deinit();
    EXPECT_STREQ(plugin.info().name, "Vireo Vertical Flip");
    const PluginInstance instance(plugin, size.width, size.height), other(plugin, 3, 200);
    plugin.deinit();
    plugin.deinit();
    EXPECT_EQ(plugin.construct(8, 8), nullptr);
    Picture result(clip[0].size());
    plugin.update(instance, 0, clip[0].data(), result.data());
    EXPECT_EQ(result, Reference("Vireo Vertical Flip").frame(clip, size, 0));
}

TEST(Lifetime, TheModuleGoesWithItsLastUser) {
    ASSERT_FALSE(moduleIsLoaded());
    for (int round = 0; round < 3; ++round) {
        const InitialisedPlugin one(pluginFile("vireo_levels"));
        {
            // Some hosts forget f0r_deinit.
            const LoadedPlugin other(pluginFile("vireo_bend"));
            EXPECT_EQ(other.init(), 1);
        }
        EXPECT_TRUE(moduleIsLoaded());
    }
    EXPECT_FALSE(moduleIsLoaded());
}

TEST(Lifetime, SizesThatNoFrameHasAreRefused) {
    const InitialisedPlugin plugin(pluginFile("vireo_vertical_flip"));
    testing::internal::CaptureStderr();
    for (const auto& [width, height] : {std::pair{0U, 8U}, {8U, 0U}, {1U << 30, 8U}, {8U, ~0U}, {~0U, ~0U}}) {
        EXPECT_EQ(plugin.construct(width, height), nullptr) << width << " x " << height;
    }
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("1073741824 pixels is outside 1 to"));
}

}  // namespace
