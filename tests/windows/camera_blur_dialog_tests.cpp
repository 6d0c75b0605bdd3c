// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include <commctrl.h>
#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t cameraBlurId = 10010;
constexpr int slider = 10;
constexpr int readOut = 12;
using Settings = std::uint16_t;

std::uint16_t storedAmount(const DialogFixture& fixture) {
    std::uint16_t amount = 0xFFFF;
    const auto bytes = fixture.settings();
    if (bytes.size() == sizeof amount) std::memcpy(&amount, bytes.data(), sizeof amount);
    return amount;
}

TEST(CameraBlurDialog, OpensWithTheStoredAmountAndStoresTheSlidersOnOk) {
    DialogFixture fixture(cameraBlurId, 320, 240);
    fixture.store(Settings{60});
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
        EXPECT_EQ(dialog.title(), L"Camera Blur Settings");
        EXPECT_EQ(dialog.slider(slider), 60);
        EXPECT_EQ(dialog.text(readOut), L"60%");
        dialog.slide(slider, 80);
        EXPECT_EQ(dialog.text(readOut), L"80%");
        dialog.press(IDOK);
    }),
              0);
    EXPECT_EQ(storedAmount(fixture), 80);
    EXPECT_EQ(fixture.liveHandles(), 0);
}

TEST(CameraBlurDialog, MakesSettingsOnOkAlone) {
    DialogFixture fixture(cameraBlurId, 64, 48);
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
        EXPECT_EQ(dialog.slider(slider), 25);
        dialog.slide(slider, 3);
        dialog.press(IDCANCEL);
    }),
              1);
    EXPECT_TRUE(fixture.settings().empty());
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
        dialog.slide(slider, 3);
        dialog.close();
    }),
              0);
    EXPECT_TRUE(fixture.settings().empty());
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
        dialog.slide(slider, 3);
        dialog.press(IDOK);
    }),
              0);
    EXPECT_EQ(storedAmount(fixture), 3);
    EXPECT_EQ(fixture.liveHandles(), 0);
}

TEST(CameraBlurDialog, ThePreviewFollowsTheSlider) {
    DialogFixture fixture(cameraBlurId, 240, 180);
    // One white column in black: blur spreads it.
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 240; ++x) fixture.setPixel(x, y, x == 120 ? 0xFFFFFFFF : 0xFF000000);
    }
    fixture.store(Settings{0});
    fixture.setup([](const Dialog& dialog) {
        RECT client;
        GetClientRect(dialog.window(), &client);
        const int middle = (client.right - 240) / 2 + 120;
        const int y = (dialog.box(slider).top - 180) / 2 + 90;
        EXPECT_EQ(dialog.pixel(middle, y), RGB(255, 255, 255));
        EXPECT_EQ(dialog.pixel(middle + 6, y), RGB(0, 0, 0));
        dialog.slide(slider, 100);
        EXPECT_LT(GetRValue(dialog.pixel(middle, y)), 60);
        EXPECT_GT(GetRValue(dialog.pixel(middle + 6, y)), 5);
        dialog.press(IDCANCEL);
    });
}

}  // namespace
