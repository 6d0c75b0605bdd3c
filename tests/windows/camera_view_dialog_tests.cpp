// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <array>
#include <thread>

namespace {

constexpr std::uint32_t cameraViewId = 10011;
constexpr int longitude = 10;
constexpr int focalLength = 16;
constexpr int distance = 18;
constexpr int zoom = 20;
constexpr int sample = 30;
constexpr int swatch = 31;
constexpr int resetButton = 1240;
constexpr int fillAlpha = 1253;

int edit(int slider) { return slider + 1; }

#pragma pack(push, 2)
struct Stored {
    std::array<std::int16_t, 6> values;  // Angles, focal length, distance and zoom.
    std::uint32_t fillColor;
    FrameRect reference;
    std::uint16_t fillAlpha;
};
#pragma pack(pop)

TEST(CameraViewDialog, SlidersAndEditsFollowEachOther) {
    DialogFixture fixture(cameraViewId, 160, 120);
    fixture.work(IDOK, [](const Dialog& dialog) {
        EXPECT_EQ(dialog.title(), L"Camera View Settings");
        EXPECT_EQ(dialog.slider(focalLength), 500);
        EXPECT_EQ(dialog.text(edit(zoom)), L"1.00");
        EXPECT_TRUE(dialog.checked(fillAlpha));
        dialog.slide(longitude, 30);
        EXPECT_EQ(dialog.text(edit(longitude)), L"30");
        dialog.type(edit(longitude), L"400");
        EXPECT_EQ(dialog.text(edit(longitude)), L"360");
        EXPECT_EQ(dialog.slider(longitude), 360);
        dialog.type(edit(distance), L"70");
        EXPECT_EQ(dialog.slider(distance), 70);
        dialog.type(edit(focalLength), L"1200");
        EXPECT_EQ(dialog.text(edit(focalLength)), L"1200");  // Refused, and left to be seen.
        EXPECT_EQ(dialog.slider(focalLength), 120);          // What stood there before the last digit.
        EXPECT_EQ(dialog.text(focalLength), L"120");
        dialog.type(edit(zoom), L"5");
        EXPECT_EQ(dialog.slider(zoom), 400);
        dialog.type(edit(zoom), L"7");
        EXPECT_EQ(dialog.text(edit(zoom)), L"4.00");
        dialog.type(edit(zoom), L"2.5");
        EXPECT_EQ(dialog.slider(zoom), 250);
        dialog.press(fillAlpha);
    });
    const auto settings = fixture.settingsAs<Stored>();
    EXPECT_EQ(settings.values, (std::array<std::int16_t, 6>{360, 0, 0, 120, 70, 250}));
    EXPECT_EQ(settings.fillAlpha, 0);
    EXPECT_EQ(settings.reference.right - settings.reference.left, 160);
    EXPECT_EQ(settings.reference.bottom - settings.reference.top, 120);
    EXPECT_GT(settings.reference.left, 0);
}

TEST(CameraViewDialog, ResetLeavesThePreviewUntilTheNextChange) {
    DialogFixture fixture(cameraViewId, 160, 120);
    fixture.work(IDOK, [&](const Dialog& dialog) {
        dialog.slide(zoom, 40);
        const auto pixelsBefore = fixture.destination.picture();
        dialog.press(resetButton);
        EXPECT_EQ(dialog.slider(zoom), 100);
        EXPECT_EQ(dialog.text(edit(zoom)), L"1.00");
        EXPECT_EQ(fixture.destination.picture(), pixelsBefore);
        dialog.slide(zoom, 100);
        EXPECT_NE(fixture.destination.picture(), pixelsBefore);
    });
    EXPECT_EQ(fixture.settingsAs<Stored>().values.back(), 100);
    EXPECT_EQ(fixture.settingsAs<Stored>().fillColor, 0x00FFFFFFU);
}

TEST(CameraViewDialog, TheEyedropperTakesTheColorUnderThePointer) {
    Picture picture{64, 48};
    std::fill_n(picture.row(0), 24 * 64, 0xFF405060);  // Row 0 is the lowest.
    std::fill_n(picture.row(24), 24 * 64, 0xFF102030);
    DialogFixture fixture(cameraViewId, picture);
    fixture.work(IDOK, [](const Dialog& dialog) {
        const RECT area = dialog.box(sample);
        POINT point{(area.left + area.right) / 2, area.top + 5};  // In the picture's upper half.
        ClientToScreen(dialog.window(), &point);
        SetCursorPos(point.x, point.y);
        for (const DWORD step : {0, MOUSEEVENTF_LEFTDOWN, MOUSEEVENTF_LEFTUP}) {
            INPUT input{};
            input.type = INPUT_MOUSE;
            input.mi.dwFlags = step;
            if (step != 0) SendInput(1, &input, sizeof input);
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        }
        const RECT shown = dialog.box(swatch);
        EXPECT_EQ(dialog.pixel((shown.left + shown.right) / 2, (shown.top + shown.bottom) / 2),
                  RGB(0x10, 0x20, 0x30));
    });
    EXPECT_EQ(fixture.settingsAs<Stored>().fillColor, 0x00302010U);
}

}  // namespace
