// SPDX-License-Identifier: MIT
// How long hosts wait when they start, in a process that has nothing of ours yet.
#include "tests/bridges/openfx/host/test_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>

namespace openfx::test {
namespace {

TEST(OpenFxLoading, TakesNoTimeThatPeopleNotice) {
    const auto begin = std::chrono::steady_clock::now();
    TestHost host;
    const LoadedBundle bundle(LoadedBundle::find(VIREO_TESTED_OPENFX, "Vireo"));
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
    // 20 ms on a machine of its own; tests share theirs.
    EXPECT_LT(taken.count(), 200);
}

}  // namespace
}  // namespace openfx::test
