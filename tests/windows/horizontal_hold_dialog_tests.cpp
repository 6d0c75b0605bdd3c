// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr std::uint32_t horizontalHoldId = 10031;
constexpr int slider = 1098;
using Settings = std::array<std::int32_t, 2>;

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
        fixture.work(IDOK, [&](const Dialog& dialog) {
            EXPECT_EQ(dialog.title(), L"Horizontal Hold Settings");
            EXPECT_EQ(dialog.slider(slider), example.position);
            dialog.slide(slider, example.moved);
        });
        EXPECT_EQ(fixture.settingsAs<Settings>(), example.after);
    }
}

TEST(HorizontalHoldDialog, CancelKeepsTheEndStep) {
    DialogFixture fixture(horizontalHoldId, 64, 48);
    fixture.store(Settings{5, 7});
    fixture.work(IDCANCEL, [](const Dialog& dialog) { dialog.slide(slider, 200); });
    EXPECT_EQ(fixture.settingsAs<Settings>(), (Settings{5, 7}));
}

}  // namespace
