// SPDX-License-Identifier: MIT
#include "filters/lens/camera_view.h"
#include "tests/windows/dialog_driver.h"

#include <commctrl.h>
#include <gtest/gtest.h>

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

struct Stored {
    std::int16_t values[6];
    std::uint32_t fillColor;
    FrameRect reference;
    std::uint16_t fillAlpha;
};

Stored stored(const DialogFixture& fixture) {
    const auto bytes = fixture.settings();
    EXPECT_EQ(bytes.size(), sizeof(CameraView::Settings));
    Stored settings{};
    if (bytes.size() != sizeof(CameraView::Settings)) return settings;
    std::memcpy(settings.values, bytes.data(), 12);
    std::memcpy(&settings.fillColor, bytes.data() + 12, 4);
    std::memcpy(&settings.reference, bytes.data() + 16, 16);
    std::memcpy(&settings.fillAlpha, bytes.data() + 32, 2);
    return settings;
}

void waitMilliseconds(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

TEST(CameraViewDialog, SlidersAndEditsFollowEachOther) {
    DialogFixture fixture(cameraViewId, 160, 120);
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
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
        dialog.type(edit(zoom), L"2.5");
        EXPECT_EQ(dialog.slider(zoom), 250);
        dialog.press(fillAlpha);
        dialog.press(IDOK);
    }),
              0);
    const Stored settings = stored(fixture);
    EXPECT_EQ(settings.values[0], 360);
    EXPECT_EQ(settings.values[3], 500);
    EXPECT_EQ(settings.values[4], 70);
    EXPECT_EQ(settings.values[5], 250);
    EXPECT_EQ(settings.fillAlpha, 0);
    EXPECT_EQ(settings.reference.right - settings.reference.left, 160);
    EXPECT_EQ(settings.reference.bottom - settings.reference.top, 120);
    EXPECT_GT(settings.reference.left, 0);
    EXPECT_EQ(fixture.liveHandles(), 0);
}

TEST(CameraViewDialog, RefusedLengthsStayVisibleAndZoomHasTwoLimits) {
    DialogFixture fixture(cameraViewId, 64, 48);
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
        dialog.type(edit(focalLength), L"1200");
        EXPECT_EQ(dialog.text(edit(focalLength)), L"1200");
        EXPECT_EQ(dialog.slider(focalLength), 120);  // What stood there before the last digit.
        EXPECT_EQ(dialog.text(focalLength), L"120");
        dialog.type(edit(zoom), L"5");
        EXPECT_EQ(dialog.slider(zoom), 400);
        dialog.type(edit(zoom), L"7");
        EXPECT_EQ(dialog.slider(zoom), 400);
        EXPECT_EQ(dialog.text(edit(zoom)), L"4.00");
        dialog.press(IDCANCEL);
    }),
              1);
    EXPECT_TRUE(fixture.settings().empty());
    EXPECT_EQ(fixture.liveHandles(), 0);
}

TEST(CameraViewDialog, ResetLeavesThePreviewUntilTheNextChange) {
    DialogFixture fixture(cameraViewId, 160, 120);
    EXPECT_EQ(fixture.setup([&](const Dialog& dialog) {
        dialog.slide(zoom, 40);
        const auto pixelsBefore = fixture.pixels(fixture.destination());
        dialog.press(resetButton);
        EXPECT_EQ(dialog.slider(zoom), 100);
        EXPECT_EQ(dialog.text(edit(zoom)), L"1.00");
        EXPECT_EQ(fixture.pixels(fixture.destination()), pixelsBefore);
        dialog.slide(zoom, 100);
        EXPECT_NE(fixture.pixels(fixture.destination()), pixelsBefore);
        dialog.press(IDOK);
    }),
              0);
    EXPECT_EQ(stored(fixture).values[5], 100);
    EXPECT_EQ(stored(fixture).fillColor, 0x00FFFFFFU);
}

TEST(CameraViewDialog, TheEyedropperTakesTheColorUnderThePointer) {
    DialogFixture fixture(cameraViewId, 64, 48);
    for (int y = 0; y < 48; ++y) {
        for (int x = 0; x < 64; ++x) fixture.setPixel(x, y, y < 24 ? 0xFF102030 : 0xFF405060);
    }
    EXPECT_EQ(fixture.setup([](const Dialog& dialog) {
        const RECT area = dialog.box(sample);
        POINT point{(area.left + area.right) / 2, area.top + 5};  // In the picture's upper half.
        ClientToScreen(dialog.window(), &point);
        SetCursorPos(point.x, point.y);
        waitMilliseconds(200);
        INPUT down{};
        down.type = INPUT_MOUSE;
        down.mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
        SendInput(1, &down, sizeof down);
        waitMilliseconds(200);
        INPUT up = down;
        up.mi.dwFlags = MOUSEEVENTF_LEFTUP;
        SendInput(1, &up, sizeof up);
        waitMilliseconds(200);
        const RECT shown = dialog.box(swatch);
        EXPECT_EQ(dialog.pixel((shown.left + shown.right) / 2, (shown.top + shown.bottom) / 2),
                  RGB(0x10, 0x20, 0x30));
        dialog.press(IDOK);
    }),
              0);
    EXPECT_EQ(stored(fixture).fillColor, 0x00302010U);
}

}  // namespace
