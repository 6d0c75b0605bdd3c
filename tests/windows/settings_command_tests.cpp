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
