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

using Bytes = std::vector<std::uint8_t>;

Bytes record(int lowValue, int highValue, int softnessValue, int inverted) {
    const auto byte = [](int value) { return static_cast<std::uint8_t>(value); };
    return {byte(lowValue), 0, byte(highValue), 0, byte(softnessValue), 0, byte(inverted), 0};
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

TEST(ExtractDialog, RefusesWhatIsOutOfRange) {
    DialogFixture fixture(extractId, 64, 48);
    const Bytes before = record(50, 100, 5, 1);
    fixture.storeBytes(before.data(), before.size());
    fixture.work(IDCANCEL, [](const Dialog& dialog) {
        EXPECT_TRUE(dialog.checked(invert));
        for (const auto& [id, text, stays] :
             {std::tuple(low, L"101", L"50"), std::tuple(low, L"", L"50"), std::tuple(high, L"49", L"100"),
              std::tuple(high, L"256", L"100"), std::tuple(softness, L"101", L"5")}) {
            dialog.type(id, text);
            EXPECT_EQ(dialog.text(id), stays);
        }
    });
    EXPECT_EQ(fixture.settings(), before);
}

TEST(ExtractDialog, HandlesStopAtEachOther) {
    DialogFixture fixture(extractId, 64, 48);
    fixture.work(accept, [](const Dialog& dialog) {
        const RECT box = dialog.box(line);
        const int width = box.right - box.left;
        const auto at = [&](int value) {
            return POINT{box.left + (width - 1) * value / 255, box.bottom + 4};
        };
        dialog.drag(at(64), {box.right + 100, box.bottom + 4});
        EXPECT_EQ(dialog.text(low), L"192");
        dialog.drag(at(192), {box.left - 50, box.bottom + 40});
        EXPECT_EQ(dialog.text(low), L"0");
        dialog.drag({box.left + width / 2, box.top - 20}, {box.left, box.top});
        EXPECT_EQ(dialog.text(high), L"192");
    });
    EXPECT_EQ(fixture.settings(), record(0, 192, 25, 0));
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
