// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr std::uint32_t horizontalHoldId = 10031;
constexpr int slider = 1098;
using Settings = std::array<std::int32_t, 2>;

Settings stored(const DialogFixture& fixture) {
    Settings settings{-1, -1};
    const auto bytes = fixture.settings();
    if (bytes.size() == sizeof settings) std::memcpy(&settings, bytes.data(), sizeof settings);
    return settings;
}

TEST(HorizontalHoldDialog, ShowsTheOffsetAndStoresOneValueForBothEnds) {
    const struct {
        Settings before;
        int position;
        int moved;
        Settings after;
    } cases[] = {
        {{0, 0}, 127, 135, {65536, 65536}},
        {{-65536, 3}, 119, 126, {-8192, -8192}},
        {{1 << 24, 0}, 255, 255, {128 << 13, 128 << 13}},  // Beyond the slider's end.
        {{8191, -8191}, 127, 0, {-(127 << 13), -(127 << 13)}},
    };
    for (const auto& example : cases) {
        DialogFixture fixture(horizontalHoldId, 64, 48);
        fixture.store(example.before);
        EXPECT_EQ(fixture.setup([&](const Dialog& dialog) {
            EXPECT_EQ(dialog.title(), L"Horizontal Hold Settings");
            EXPECT_EQ(dialog.slider(slider), example.position);
            dialog.slide(slider, example.moved);
            dialog.press(IDOK);
        }),
                  0);
        EXPECT_EQ(stored(fixture), example.after);
        EXPECT_EQ(fixture.liveHandles(), 0);
    }
}

TEST(HorizontalHoldDialog, CancelKeepsTheEndStep) {
    DialogFixture fixture(horizontalHoldId, 64, 48);
    fixture.store(Settings{5, 7});
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
        dialog.slide(slider, 200);
        dialog.press(IDCANCEL);
    }),
              1);
    EXPECT_EQ(stored(fixture), (Settings{5, 7}));
    EXPECT_EQ(fixture.liveHandles(), 0);
}

}  // namespace
