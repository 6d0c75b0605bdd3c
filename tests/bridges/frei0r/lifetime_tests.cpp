// SPDX-License-Identifier: GPL-2.0-or-later
// Orders of calls that hosts really make, and some that none should. The sanitizers watch.
#include "tests/bridges/frei0r/support/loaded_plugin.h"
#include "tests/bridges/frei0r/support/reference.h"

#include <gmock/gmock.h>

#include <string_view>

namespace {

bool moduleIsLoaded() { return isLoaded(VIREO_TESTED_MODULE); }

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

#if defined(_WIN32)

constexpr const char* whatIsMissing = "vireo_levels: there is no VireoFrei0r.dll near .*stray-plugin.: .*\n";

constexpr wchar_t installationKey[] = L"Software\\Vireo Filters";

bool areInstalled() {
    return RegGetValueW(HKEY_CURRENT_USER, installationKey, L"Folder", RRF_RT_REG_SZ, nullptr, nullptr,
                        nullptr) == ERROR_SUCCESS;
}

/// What the installer leaves in the registry, while it lives.
class Installation {
public:
    explicit Installation(const std::filesystem::path& folder) {
        RegSetKeyValueW(HKEY_CURRENT_USER, installationKey, L"Folder", REG_SZ, folder.c_str(),
                        static_cast<DWORD>((folder.native().size() + 1) * sizeof(wchar_t)));
    }
    Installation(const Installation&) = delete;
    Installation& operator=(const Installation&) = delete;
    ~Installation() { RegDeleteKeyW(HKEY_CURRENT_USER, installationKey); }
};

TEST(Lifetime, APluginCopiedIntoAnotherFolderStartsWhereTheFiltersAreInstalled) {
    const EmptyFolder folder;
    const auto module = std::filesystem::absolute(VIREO_TESTED_MODULE).make_preferred();
    const Installation installation(module.parent_path());
    std::filesystem::copy_file(pluginFile("vireo_levels"), folder.path / "plugin.dll");
    const InitialisedPlugin plugin(folder.path / "plugin.dll");
    EXPECT_STREQ(plugin.info().name, "Vireo Levels");
}

#else

constexpr const char* whatIsMissing =
    "vireo_levels: there is no libvireo_frei0r.so near .*stray-plugin or .*\n";

bool areInstalled() { return std::filesystem::exists(VIREO_INSTALLED_FOLDER); }

TEST(Lifetime, APluginLinkedIntoAnotherFolderStarts) {
    const EmptyFolder folder;
    std::filesystem::create_symlink(pluginFile("vireo_levels"), folder.path / "plugin.so");
    const InitialisedPlugin plugin(folder.path / "plugin.so");
    EXPECT_STREQ(plugin.info().name, "Vireo Levels");
}

#endif

TEST(Lifetime, APluginThatIsAloneSaysWhatItMissesAndDoesNothing) {
    if (areInstalled()) GTEST_SKIP() << "it would find the installed filters";
    const EmptyFolder folder;
    const auto alone = folder.path / (std::string("plugin") + libraryEnding);
    std::filesystem::copy_file(pluginFile("vireo_levels"), alone);
    const LoadedPlugin plugin(alone);
    testing::internal::CaptureStderr();
    EXPECT_EQ(plugin.init(), 0);
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::MatchesRegex(whatIsMissing));
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
        // On Windows such a host keeps the module.
        if (std::string_view(libraryEnding) == ".so") {
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
