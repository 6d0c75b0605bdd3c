// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t cameraBlurId = 10010;
constexpr int slider = 10;
constexpr int readOut = 12;
using Amount = std::uint16_t;

TEST(CameraBlurDialog, MakesSettingsOnOkAloneAndOpensWithThem) {
    DialogFixture fixture(cameraBlurId, 320, 240);
    for (const int button : {IDCANCEL, 0, IDOK}) {
        EXPECT_TRUE(fixture.settings().empty());
        fixture.work(button, [](const Dialog& dialog) {
            EXPECT_EQ(dialog.slider(slider), 25);
            dialog.slide(slider, 60);
        });
    }
    fixture.work(IDOK, [](const Dialog& dialog) {
        EXPECT_EQ(dialog.title(), L"Camera Blur Settings");
        EXPECT_EQ(dialog.slider(slider), 60);
        EXPECT_EQ(dialog.text(readOut), L"60%");
        dialog.slide(slider, 80);
        EXPECT_EQ(dialog.text(readOut), L"80%");
    });
    EXPECT_EQ(fixture.settingsAs<Amount>(), 80);
}

TEST(CameraBlurDialog, ThePreviewFollowsTheSlider) {
    // One white column in black: blur spreads it.
    Picture picture{240, 180};
    for (int x = 0; x < 240; ++x) {
        for (int y = 0; y < 180; ++y) picture.at(x, y) = x == 120 ? 0xFFFFFFFF : 0xFF000000;
    }
    DialogFixture fixture(cameraBlurId, picture);
    fixture.setSettings({Amount{0}});
    fixture.work(IDCANCEL, [](const Dialog& dialog) {
        RECT client;
        GetClientRect(dialog.window(), &client);
        const int middle = (client.right - 240) / 2 + 120;
        const int y = (dialog.box(slider).top - 180) / 2 + 90;
        EXPECT_EQ(dialog.pixel(middle, y), RGB(255, 255, 255));
        EXPECT_EQ(dialog.pixel(middle + 6, y), RGB(0, 0, 0));
        dialog.slide(slider, 100);
        EXPECT_LT(GetRValue(dialog.pixel(middle, y)), 60);
        EXPECT_GT(GetRValue(dialog.pixel(middle + 6, y)), 5);
    });
}

}  // namespace
