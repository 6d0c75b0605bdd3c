// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

#include <array>

namespace {

constexpr std::uint32_t horizontalHoldId = 10031;
constexpr int slider = 1098;
using Settings = std::array<std::int32_t, 2>;

TEST(HorizontalHoldDialog, TheSliderIsStoredOnOkAlone) {
    DialogFixture fixture(horizontalHoldId, 64, 48);
    constexpr Settings beyondTheSlider{1 << 24, 7};
    fixture.setRecord(beyondTheSlider);
    fixture.work(IDCANCEL, [](const Dialog& dialog) {
        EXPECT_EQ(dialog.title(), L"Horizontal Hold Settings");
        EXPECT_EQ(dialog.slider(slider), 255);
        dialog.slide(slider, 200);
    });
    EXPECT_EQ(fixture.settingsAs<Settings>(), beyondTheSlider);
    fixture.work(IDOK, [](const Dialog& dialog) { dialog.slide(slider, 135); });
    EXPECT_EQ(fixture.settingsAs<Settings>(), (Settings{65536, 65536}));
}

}  // namespace
