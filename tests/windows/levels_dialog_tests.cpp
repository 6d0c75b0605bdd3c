// SPDX-License-Identifier: MIT
#include "filters/color/levels.h"
#include "host/vireo_host.h"
#include "tests/windows/dialog_driver.h"

#include <dlgs.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <thread>

namespace {

using namespace std::chrono_literals;
using Levels::Settings;

constexpr std::uint32_t levelsId = 10035;
constexpr int accept = 1034;
constexpr int loadButton = 1074;
constexpr int saveButton = 1075;
constexpr int channel = 1110;
constexpr int inputBlack = 1111;
constexpr int gamma = 1112;
constexpr int inputWhite = 1113;
constexpr int outputWhite = 1116;

void waitUntilGone(HWND window) {
    for (int i = 0; i < 500 && IsWindow(window); ++i) std::this_thread::sleep_for(20ms);
    EXPECT_FALSE(IsWindow(window));
}

/// Presses Load or Save and answers the file dialog; a message box that follows is closed. True when one did.
bool chooseFile(const Dialog& dialog, int button, const wchar_t* title, const std::filesystem::path& path) {
    PostMessageW(dialog.control(button), BM_CLICK, 0, 0);
    const HWND files = waitForWindow(title);
    HWND name = GetDlgItem(files, edt1);
    if (name == nullptr) name = GetDlgItem(files, cmb13);
    EXPECT_NE(name, nullptr);
    SendMessageW(name, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(path.c_str()));
    SendMessageW(files, WM_COMMAND, IDOK, 0);
    waitUntilGone(files);
    std::this_thread::sleep_for(150ms);
    const HWND message = FindWindowW(nullptr, title);
    if (message == nullptr) return false;
    SendMessageW(message, WM_COMMAND, IDOK, 0);
    waitUntilGone(message);
    return true;
}

TEST(LevelsDialog, FieldsOfEveryChannelAreStoredOnOk) {
    DialogFixture fixture(levelsId, 64, 48);
    fixture.work(accept, [](const Dialog& dialog) {
        EXPECT_EQ(dialog.title(), L"Levels Settings");
        EXPECT_EQ(dialog.text(gamma), L"1.00");
        dialog.type(inputBlack, L"20");
        dialog.type(gamma, L"1.15");
        EXPECT_EQ(dialog.text(gamma), L"1.14");  // Truncated, as it always was.
        dialog.choose(channel, 3);
        EXPECT_EQ(dialog.text(inputBlack), L"0");
        dialog.type(outputWhite, L"99");
        dialog.choose(channel, 0);
        EXPECT_EQ(dialog.text(inputBlack), L"20");
    });
    const Settings settings = fixture.settingsAs<Settings>();
    EXPECT_EQ(settings.master.inputBlack, 20);
    EXPECT_EQ(settings.master.gamma, 114);
    EXPECT_EQ(settings.blue.outputWhite, 99);
    EXPECT_EQ(settings.red, Levels::Channel{});
}

TEST(LevelsDialog, RefusedTextGoesAndCancelStoresNothing) {
    DialogFixture fixture(levelsId, 64, 48);
    fixture.setRecord(Settings{});
    fixture.work(IDCANCEL, [](const Dialog& dialog) {
        dialog.type(inputWhite, L"300");
        EXPECT_EQ(dialog.text(inputWhite), L"255");
        dialog.type(gamma, L"ten");
        EXPECT_EQ(dialog.text(gamma), L"1.00");
        dialog.type(inputBlack, L"9");
    });
    EXPECT_EQ(fixture.settingsAs<Settings>().master, Levels::Channel{});
}

TEST(LevelsDialog, GammaIsWrittenInTheHostsLanguage) {
    vireoHostSetLanguage(0x0407);
    DialogFixture fixture(levelsId, 64, 48);
    fixture.work(accept, [](const Dialog& dialog) {
        EXPECT_EQ(dialog.text(gamma), L"1,00");
        dialog.type(gamma, L"2,5");
        EXPECT_EQ(dialog.text(gamma), L"2,50");
    });
    vireoHostSetLanguage(0x0409);
    EXPECT_EQ(fixture.settingsAs<Settings>().master.gamma, 250);
}

TEST(LevelsDialog, ThePreviewFollowsADrag) {
    DialogFixture fixture(levelsId, 64, 48);
    fixture.work(IDCANCEL, [](const Dialog& dialog) {
        const RECT histogram = dialog.box(1080);
        const RECT line = dialog.box(1087);
        const RECT group = dialog.box(1117);
        RECT client;
        GetClientRect(dialog.window(), &client);
        const int middle = group.right + (client.right - group.right) / 2;
        const int y = dialog.box(channel).top + 60;
        const COLORREF before = dialog.pixel(middle, y);
        dialog.drag({histogram.left, line.bottom + 4},
                    {(histogram.left + histogram.right) / 2, line.bottom + 4});
        EXPECT_GT(_wtoi(dialog.text(inputBlack).c_str()), 100);
        EXPECT_LT(GetGValue(dialog.pixel(middle, y)) + 60, GetGValue(before));
    });
}

TEST(LevelsDialog, SavesAndLoadsParameterFiles) {
    const auto folder = std::filesystem::temp_directory_path() / L"vireo_levels_dialog";
    std::filesystem::create_directories(folder);
    const auto wrong = folder / L"wrong.lvl", saved = folder / L"saved.lvl";
    std::ofstream(wrong) << "LVL" + std::string(41, '\1');
    constexpr wchar_t loadTitle[] = L"Load Levels Parameters";

    DialogFixture fixture(levelsId, 64, 48);
    fixture.work(accept, [&](const Dialog& dialog) {
        dialog.type(inputBlack, L"77");
        EXPECT_FALSE(chooseFile(dialog, saveButton, L"Save Levels Parameters", saved));
        dialog.type(inputBlack, L"9");
        EXPECT_TRUE(chooseFile(dialog, loadButton, loadTitle, wrong));
        EXPECT_EQ(dialog.text(inputBlack), L"9");
        EXPECT_FALSE(chooseFile(dialog, loadButton, loadTitle, saved));
        EXPECT_EQ(dialog.text(inputBlack), L"77");
    });
    EXPECT_EQ(fixture.settingsAs<Settings>().master.inputBlack, 77);
    // The file dialog has made the folder the current one.
    std::filesystem::current_path(folder.parent_path());
    std::filesystem::remove_all(folder);
}

}  // namespace
