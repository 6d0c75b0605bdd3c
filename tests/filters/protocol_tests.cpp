// SPDX-License-Identifier: MIT
// What every filter answers to the selectors and makes of settings, as lines of a file beside this one.
#include "tests/support/filter_under_test.h"
#include "tests/support/golden_file.h"
#include "tests/support/recording_host.h"

#include "host/heapkit/memory_handles.h"

#include <algorithm>
#include <cstdio>

namespace {

using Bytes = std::vector<std::uint8_t>;

std::string digits(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
        char pair[3];
        std::snprintf(pair, sizeof pair, "%02x", byte);
        text += pair;
    }
    return text.empty() ? "none" : text;
}

class Protocol : public testing::TestWithParam<std::uint32_t> {
protected:
    Protocol() { filter.invocation.hostCallbacks = host.callbacks(); }

    RecordingHost host;
    FilterUnderTest filter{GetParam()};
    const Bytes initial = [] {
        FilterUnderTest fresh(GetParam());
        fresh.call(FilterSelectorInitSettings);
        return fresh.settings();
    }();
};

/// The record's size and then the settings', after a "c" where the context's memory is asked for it.
std::string freshSettings(std::uint32_t id) {
    const RecordingHost host;
    FilterUnderTest filter(id);
    filter.invocation.hostCallbacks = host.callbacks();
    const std::int32_t result = filter.call(FilterSelectorInitSettings);
    const std::string leak = host.liveHandles() == result ? "" : ", more handles live on";
    const std::string asked = host.allocations().empty() ? "nothing" : host.allocations();
    return "start " + std::to_string(result) + ", asks for " + asked + ", gets " + digits(filter.settings()) +
           leak;
}

/// What a second start leaves of settings that count up.
std::string keptSettings(std::uint32_t id, std::size_t size) {
    const RecordingHost host;
    FilterUnderTest filter(id);
    filter.invocation.hostCallbacks = host.callbacks();
    Bytes stored(size);
    for (std::size_t i = 0; i < size; ++i) stored[i] = static_cast<std::uint8_t>(0xA1 + 7 * i);
    if (size > 0) filter.setSettings(stored);
    const MemoryHandle handle = filter.invocation.settingsHandle;
    const std::int32_t result = filter.call(FilterSelectorInitSettings);
    EXPECT_TRUE(handle == nullptr || filter.invocation.settingsHandle.get() == handle);
    EXPECT_EQ(host.liveHandles(), 0);
    return "again " + std::to_string(result) + ", gets " +
           (filter.settings() == stored ? "what was there" : digits(filter.settings()));
}

std::string formats(std::uint32_t id) {
    FilterUnderTest filter(id);
    std::string text = "formats";
    for (std::uint32_t index = 0; index < 12; ++index) {
        filter.invocation.pixelFormat = PixKit::formatCode("keep");
        filter.invocation.pixelFormatIndex = index == 11 ? 0xFFFFFFFF : index;
        const std::int32_t result = filter.call(FilterSelectorGetPixelFormat);
        text += ' ' + std::string(reinterpret_cast<const char*>(&filter.invocation.pixelFormat), 4) +
                (result == 0 ? "" : "=" + std::to_string(result));
    }
    return text;
}

TEST(Protocols, StandAsOldHostsKnowThem) {
    GoldenLines lines;
    for (const std::uint32_t id : filterIds()) {
        FilterUnderTest filter(id);
        filter.call(FilterSelectorInitSettings);
        const std::int32_t flags = filter.call(FilterSelectorGetFilterFlags);
        lines[std::to_string(id)] = freshSettings(id) + "; " + keptSettings(id, filter.settings().size()) +
                                    "; flags " + std::to_string(flags) + "; " + formats(id);
    }
    expectGolden(VIREO_PROTOCOLS,
                 "# SPDX-License-Identifier: MIT\n"
                 "# What each filter answers; tests/filters/protocol_tests.cpp writes this file.\n",
                 lines);
}

TEST_P(Protocol, UnknownSelectorsChangeNothing) {
    for (const Bytes& settings : {Bytes(), initial}) {
        if (!settings.empty()) filter.setSettings(settings);
        // Nothing reads these bytes, so that any pattern may stand there.
        auto* const bytes = reinterpret_cast<std::uint8_t*>(&filter.invocation);
        const FilterInvocation before = filter.invocation;
        for (const int selector : {2, 3, 4, 7, 9, 10, 99, 256, -1, -32768, 32767}) {
            EXPECT_EQ(filter.call(static_cast<std::int16_t>(selector)), 0) << selector;
            EXPECT_EQ(std::memcmp(bytes, &before, sizeof before), 0) << selector;
        }
        EXPECT_EQ(filter.settings(), settings);
    }
    EXPECT_EQ(host.allocations(), "");
}

#if !defined(_WIN32)  // A window would wait for its user.
TEST_P(Protocol, SetupWithoutADialogWindowLeavesTheSettings) {
    filter.call(FilterSelectorInitSettings);
    const int live = host.liveHandles();
    constexpr std::uint32_t bend = 10004, dialogs[] = {10010, 10011, 10022, 10031, 10035};
    const bool hasDialog = std::ranges::find(dialogs, GetParam()) != std::end(dialogs);
    EXPECT_EQ(filter.call(FilterSelectorSetup), GetParam() == bend ? 65535 : hasDialog ? -1 : 0);
    EXPECT_EQ(filter.settings(), initial);
    EXPECT_EQ(host.liveHandles(), live) << "nobody else releases the work record";
}
#endif

INSTANTIATE_TEST_SUITE_P(Filters, Protocol, testing::ValuesIn(filterIds()),
                         testing::PrintToStringParamName());

}  // namespace
