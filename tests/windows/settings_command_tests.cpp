// SPDX-License-Identifier: MIT
// vireo.exe settings and render, as a person would use them one after the other.
#include "tests/windows/command_fixture.h"

#include <commctrl.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

class SettingsCommand : public CommandFixture {
protected:
    const fs::path image = folder / L"pïcture.bmp";
    const fs::path look = folder / L"look.json";

    SettingsCommand() {
        // A white square on black.
        std::vector<char> pixels;
        for (int i = 0; i < 64 * 48; ++i) {
            const bool white = i % 64 >= 24 && i % 64 < 40 && i / 64 >= 16 && i / 64 < 32;
            pixels.insert(pixels.end(), 3, white ? '\xFF' : '\0');
        }
        saveBitmap(image, 64, 48, pixels);
    }
};

TEST_F(SettingsCommand, WhatIsAcceptedRendersTheSamePixels) {
    const auto process =
        start(L"settings \"Camera Blur\" --image" + quoted(image) + L"--save-settings" + quoted(look));
    const HWND dialog = waitForWindow(L"Camera Blur Settings");
    SendMessageW(GetDlgItem(dialog, 10), TBM_SETPOS, TRUE, 63);
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    EXPECT_EQ(finish(process), 0U);
    EXPECT_NE(content(look).find("\"Percent Blur\": 63"), std::string::npos) << content(look);

    const fs::path byFile = folder / L"file.bmp";
    const fs::path byText = folder / L"text.bmp";
    EXPECT_EQ(run(L"render" + quoted(image) + quoted(byFile) + L"--settings" + quoted(look)), 0U);
    EXPECT_EQ(run(L"render" + quoted(image) + quoted(byText) + L"-f \"Camera Blur:percent blur=63\""), 0U);
    EXPECT_EQ(content(byFile), content(byText));
    EXPECT_NE(content(byFile), content(image));
    EXPECT_GT(content(byFile).size(), 64U * 48 * 3);
}

TEST_F(SettingsCommand, ThePreviewFollowsTheDialogFromFrameToFrame) {
    // Frames of a grey each, with a white square whose edge a blur softens.
    for (int frame = 0; frame < 3; ++frame) {
        std::vector<char> pixels(320 * 240 * 3, static_cast<char>(40 * frame));
        for (int i = 0; i < 320 * 240; ++i)
            if (i % 320 >= 160) std::fill_n(&pixels[static_cast<std::size_t>(3 * i)], 3, '\xFF');
        saveBitmap(folder / (L"clip" + std::to_wstring(frame) + L".bmp"), 320, 240, pixels);
    }
    const auto process = start(L"settings \"Camera Blur\" --preview --image" +
                               quoted(folder / L"clip%d.bmp") + L"--save-settings" + quoted(look));
    const HWND dialog = waitForWindow(L"Camera Blur Settings");
    const HWND preview = FindWindowW(L"VireoPreview", nullptr);
    ASSERT_NE(preview, nullptr);
    // The dialog may stand over the preview's middle.
    SetWindowPos(preview, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOSIZE);
    const auto grey = [&](int x) { return static_cast<unsigned char>(onScreen(preview, x, 120, 1, 1)[0]); };
    const auto slideTo = [&](int value) {
        SendMessageW(GetDlgItem(dialog, 10), TBM_SETPOS, TRUE, value);
        SendMessageW(dialog, WM_HSCROLL, TB_ENDTRACK, reinterpret_cast<LPARAM>(GetDlgItem(dialog, 10)));
    };
    slideTo(0);
    EXPECT_TRUE(becomesTrue([&] { return grey(158) == 0 && grey(162) == 255; }));
    slideTo(90);
    EXPECT_TRUE(becomesTrue([&] { return grey(158) > 20 && grey(162) < 235; }));
    PostMessageW(preview, WM_CHAR, L'.', 0);
    EXPECT_TRUE(becomesTrue([&] { return grey(2) == 40; }));
    PostMessageW(preview, WM_CHAR, L' ', 0);
    EXPECT_TRUE(becomesTrue([&] { return grey(2) == 80; }));
    PostMessageW(dialog, WM_COMMAND, IDOK, 0);
    EXPECT_EQ(finish(process), 0U);
    EXPECT_FALSE(IsWindow(preview));
    EXPECT_NE(content(look).find("\"Percent Blur\": 90"), std::string::npos) << content(look);
}

TEST_F(SettingsCommand, CancelSavesNothingAndFiltersWithoutADialogSaySo) {
    const auto process =
        start(L"settings \"Horizontal Hold\" --image" + quoted(image) + L"--save-settings" + quoted(look));
    PostMessageW(waitForWindow(L"Horizontal Hold Settings"), WM_COMMAND, IDCANCEL, 0);
    EXPECT_EQ(finish(process), 1U);
    EXPECT_FALSE(fs::exists(look));
    EXPECT_EQ(run(L"settings Solarize --image" + quoted(image) + L"--save-settings" + quoted(look)), 1U);
    EXPECT_FALSE(fs::exists(look));
}

}  // namespace
