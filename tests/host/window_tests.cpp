// SPDX-License-Identifier: MIT
#include "host/utilkit/utilkit.h"
#include "host/utilkit/window_place.h"
#include "tests/host/test_buffer.h"

#include <gtest/gtest.h>

namespace {

TEST(WindowPlace, IsCentredAThirdDownAndKeptInsideTheWorkArea) {
    struct Case {
        std::int32_t width, height;
        FrameRect over, workArea;
        std::int32_t x, y;
    };
    const FrameRect screen{0, 0, 1000, 700};
    const FrameRect secondScreen{1000, 40, 1800, 640};
    const Case cases[] = {
        {200, 100, {100, 100, 700, 500}, screen, 300, 200},
        {200, 100, screen, screen, 400, 200},
        {400, 300, {0, 0, 100, 60}, screen, 0, 0},
        {400, 300, {900, 600, 1000, 700}, screen, 600, 400},
        {1200, 900, {100, 100, 700, 500}, screen, 0, 0},
        {200, 100, {900, 0, 1100, 200}, secondScreen, 1000, 40},
    };
    for (const Case& each : cases) {
        const UtilKit::Position place =
            UtilKit::higherPlace(each.width, each.height, each.over, each.workArea);
        EXPECT_EQ(place.x, each.x) << each.over;
        EXPECT_EQ(place.y, each.y) << each.over;
    }
}

}  // namespace

#if defined(_WIN32)

#include "host/win32.h"

namespace {

struct MemoryScreen {
    static constexpr int width = 60;
    static constexpr int height = 50;
    HDC context = CreateCompatibleDC(nullptr);
    HBITMAP bitmap = nullptr;
    std::uint32_t* pixels = nullptr;  // From the top.

    MemoryScreen() {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof info.bmiHeader, width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        void* bits = nullptr;
        bitmap = CreateDIBSection(context, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        SelectObject(context, bitmap);
        pixels = static_cast<std::uint32_t*>(bits);
    }
    ~MemoryScreen() {
        DeleteDC(context);
        DeleteObject(bitmap);
    }
    MemoryScreen(const MemoryScreen&) = delete;
    MemoryScreen& operator=(const MemoryScreen&) = delete;
};

TEST(VpixToScreen, DrawsTheScaledPictureIntoTheTargetOnly) {
    constexpr std::uint32_t colorBits = 0x00FFFFFF;
    std::mt19937 random(1);
    Memory memory = noise(40 * 40 * 4, random);
    TestBuffer buffer(memory, 0, {2, 3, 35, 30}, 140);
    for (const FrameRect& target :
         {FrameRect{5, 6, 21, 20}, {0, 0, 33, 27}, {-4, 9, 55, 48}, {9, 9, 9, 20}}) {
        MemoryScreen screen;
        ASSERT_NE(screen.pixels, nullptr);
        std::fill_n(screen.pixels, MemoryScreen::width * MemoryScreen::height, 0x00123456);
        Memory expectedMemory(80 * 80 * 4);
        const FrameRect size{0, 0, target.right - target.left, target.bottom - target.top};
        TestBuffer expected(expectedMemory, 0, size, 80 * 4);
        vpixCopy(buffer.handle(), expected.handle(), &buffer.bounds(), &size, 0);

        vpixToScreen(buffer.handle(), screen.context, &target);
        GdiFlush();
        for (int y = 0; y < MemoryScreen::height; ++y) {
            for (int x = 0; x < MemoryScreen::width; ++x) {
                const bool inside =
                    x >= target.left && x < target.right && y >= target.top && y < target.bottom;
                const std::uint32_t wanted =
                    inside ? vpixGetPixel(expected.handle(), x - target.left, y - target.top) : 0x00123456;
                ASSERT_EQ(screen.pixels[y * MemoryScreen::width + x] & colorBits, wanted & colorBits)
                    << x << ", " << y << " of " << target;
            }
        }
    }
}

TEST(CenterWndHigher, MovesTheWindowOverAnother) {
    const auto window = [](int x, int y, int width, int height) {
        return CreateWindowW(L"STATIC", L"", WS_POPUP, x, y, width, height, nullptr, nullptr, nullptr,
                             nullptr);
    };
    const HWND base = window(100, 80, 300, 240);
    const HWND moved = window(0, 0, 100, 60);
    if (base == nullptr || moved == nullptr) GTEST_SKIP() << "no desktop";
    center_wnd_higher(moved, base);
    RECT place;
    GetWindowRect(moved, &place);
    EXPECT_EQ(place.left, 200);
    EXPECT_EQ(place.top, 140);
    EXPECT_EQ(place.right, 300);
    EXPECT_EQ(place.bottom, 200);

    center_wnd_higher(moved, nullptr);
    RECT workArea;
    SystemParametersInfoW(SPI_GETWORKAREA, 0, &workArea, 0);
    GetWindowRect(moved, &place);
    EXPECT_EQ(place.left - workArea.left, (workArea.right - workArea.left - 100) / 2);
    EXPECT_EQ(place.top - workArea.top, (workArea.bottom - workArea.top - 60) / 3);
    DestroyWindow(moved);
    DestroyWindow(base);
}

}  // namespace

#endif
