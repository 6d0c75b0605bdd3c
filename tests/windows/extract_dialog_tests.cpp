// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include <gtest/gtest.h>

namespace {

constexpr std::uint32_t extractId = 10022;
constexpr int accept = 1034;
constexpr int low = 1081;
constexpr int high = 1082;
constexpr int softnessSlider = 1083;
constexpr int invert = 1084;
constexpr int softness = 1086;
constexpr int line = 1087;

std::vector<std::uint8_t> record(std::uint16_t lowValue, std::uint16_t highValue, std::uint16_t softnessValue,
                                 std::uint16_t inverted) {
    return littleEndian({lowValue, highValue, softnessValue, inverted});
}

TEST(ExtractDialog, FieldsSliderAndBoxAreStoredOnOk) {
    DialogFixture fixture(extractId, 64, 48);
    fixture.work(accept, [](const Dialog& dialog) {
        EXPECT_EQ(dialog.title(), L"Extract Settings");
        EXPECT_EQ(dialog.text(low), L"64");
        EXPECT_EQ(dialog.text(high), L"192");
        EXPECT_EQ(dialog.slider(softnessSlider), 25);
        dialog.type(low, L"10");
        dialog.type(high, L"200");
        dialog.slide(softnessSlider, 40);
        EXPECT_EQ(dialog.text(softness), L"40");
        dialog.type(softness, L"55");
        EXPECT_EQ(dialog.slider(softnessSlider), 55);
        dialog.press(invert);
    });
    EXPECT_EQ(fixture.settings(), record(10, 200, 55, 1));
}

TEST(ExtractDialog, RefusedTextGoesAndCancelStoresNothing) {
    DialogFixture fixture(extractId, 64, 48);
    const auto before = record(50, 100, 5, 1);
    fixture.setSettings(before);
    fixture.work(IDCANCEL, [](const Dialog& dialog) {
        EXPECT_TRUE(dialog.checked(invert));
        dialog.type(low, L"101");
        EXPECT_EQ(dialog.text(low), L"50");
        dialog.type(high, L"");
        EXPECT_EQ(dialog.text(high), L"100");
        dialog.type(softness, L"6");
    });
    EXPECT_EQ(fixture.settings(), before);
}

TEST(ExtractDialog, HandlesFollowThePointer) {
    DialogFixture fixture(extractId, 64, 48);
    fixture.work(accept, [](const Dialog& dialog) {
        const RECT box = dialog.box(line);
        const LONG from = box.left + (box.right - box.left - 1) * 64 / 255;
        dialog.drag({from, box.bottom + 4}, {box.right + 100, box.bottom + 40});
        EXPECT_EQ(dialog.text(low), L"192");
    });
    EXPECT_EQ(fixture.settings(), record(192, 192, 25, 0));
}

TEST(ExtractDialog, EnterCommitsAFieldAndKeepsTheDialogOpen) {
    DialogFixture fixture(extractId, 64, 48);
    fixture.work(accept, [](const Dialog& dialog) {
        SendMessageW(dialog.window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(dialog.control(low)), TRUE);
        SendMessageW(dialog.control(low), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"300"));
        SendMessageW(dialog.window(), WM_COMMAND, IDOK, 0);
        EXPECT_EQ(dialog.text(low), L"64");
        SendMessageW(dialog.control(low), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L"7"));
        SendMessageW(dialog.window(), WM_COMMAND, IDOK, 0);
        EXPECT_TRUE(IsWindow(dialog.window()));
        DWORD begin = 9;
        DWORD end = 9;
        SendMessageW(dialog.control(low), EM_GETSEL, reinterpret_cast<WPARAM>(&begin),
                     reinterpret_cast<LPARAM>(&end));
        EXPECT_EQ(begin, 0U);
        EXPECT_EQ(end, 1U);
    });
    EXPECT_EQ(fixture.settings(), record(7, 192, 25, 0));
}

}  // namespace
