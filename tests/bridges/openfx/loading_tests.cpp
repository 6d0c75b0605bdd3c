// SPDX-License-Identifier: MIT
// What hosts notice when they start, in a process that has nothing of ours yet.
#include "tests/bridges/openfx/host/test_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <clocale>
#include <cstdio>
#include <cstdlib>

namespace openfx::test {

const char* processLocale = "C";

namespace {

/// Packages are tried where they were unpacked.
std::string searchPath() {
    const char* const given = std::getenv("OFX_PLUGIN_PATH");
    return given == nullptr ? VIREO_TESTED_OPENFX : given;
}

TEST(OpenFxLoading, TakesNoTimeThatPeopleNotice) {
    const auto begin = std::chrono::steady_clock::now();
    TestHost host;
    const LoadedBundle bundle(LoadedBundle::find(searchPath(), "Vireo"));
    bundle.setHost(host.host);
    std::size_t parameters = 0;
    for (OfxPlugin* const plugin : bundle.plugins()) {
        DescribedPlugin described(*plugin, host);
        ASSERT_EQ(described.described, 0);
        parameters += described.descriptor.parameters.size();
    }
    const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(parameters, 100U);
    std::printf("loaded and described in %.1f ms\n", taken.count());
    // 20 ms on a machine of its own; tests share theirs, and Wine looks long for libraries.
#if defined(_WIN32)
    EXPECT_LT(taken.count(), 2000);
#else
    EXPECT_LT(taken.count(), 200);
#endif
}

#if !defined(_WIN32)

TEST(OpenFxLanguageDeathTest, IsThatOfTheHostsProcess) {
    const auto sayLabel = [](const char* locale) {
        processLocale = locale;
        TestHost host;
        const LoadedBundle bundle(LoadedBundle::find(searchPath(), "Vireo"));
        for (OfxPlugin* const plugin : bundle.plugins()) {
            if (std::string(plugin->pluginIdentifier) != "vireo.Solarize") continue;
            const DescribedPlugin described(*plugin, host);
            std::fputs(described.descriptor.properties.one<std::string>("OfxPropLabel").c_str(), stderr);
        }
        std::exit(0);
    };
    EXPECT_EXIT(sayLabel("de_DE.UTF-8"), testing::ExitedWithCode(0), "Solarisation");
    EXPECT_EXIT(sayLabel("C"), testing::ExitedWithCode(0), "Solarize");
    EXPECT_EXIT(sayLabel("xx_XX"), testing::ExitedWithCode(0), "Solarize");
}

#endif

}  // namespace
}  // namespace openfx::test

#if !defined(_WIN32)

/// The process's, of whatever languages the machine has.
extern "C" __attribute__((visibility("default"))) char* setlocale(int, const char*) noexcept {
    return const_cast<char*>(openfx::test::processLocale);
}

#endif
