// SPDX-License-Identifier: MIT
// The window of vireo.exe preview, as the screen shows it.
#include "tests/windows/command_fixture.h"

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
namespace fs = std::filesystem;

constexpr int width = 320, height = 240;

class PreviewCommand : public CommandFixture {
protected:
    HWND window = nullptr;

    PROCESS_INFORMATION preview(const std::wstring& arguments) {
        const PROCESS_INFORMATION process = start(L"preview " + arguments);
        becomesTrue([&] {
            window = FindWindowW(L"VireoPreview", nullptr);
            return window != nullptr && IsWindowVisible(window);
        });
        return process;
    }

    void type(wchar_t typed) const { PostMessageW(window, WM_CHAR, typed, 0); }

    DWORD close(const PROCESS_INFORMATION& process) const {
        PostMessageW(window, WM_CLOSE, 0, 0);
        return finish(process);
    }

    /// Frames of one grey each, four times their number.
    fs::path saveClip(int frames) const {
        for (int i = 0; i < frames; ++i) {
            const std::wstring name = L"frame" + std::to_wstring(100 + i) + L".bmp";
            saveBitmap(folder / name, width, height,
                       std::vector<char>(width * height * 3, static_cast<char>(4 * i)));
        }
        return folder / L"frame%03d.bmp";
    }

    int shownFrame() const {
        return static_cast<unsigned char>(onScreen(window, width / 2, height / 2, 1, 1).front()) / 4;
    }

    /// How many frames pass in a second.
    int pace() const {
        EXPECT_TRUE(becomesTrue([&] { return shownFrame() > 0; }));
        const int first = shownFrame();
        std::this_thread::sleep_for(1s);
        return shownFrame() - first;
    }
};

TEST_F(PreviewCommand, ShowsTheRenderedPicturePixelForPixelAndKeepsItsShape) {
    std::vector<char> noise(width * height * 3);
    for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>(i * i / 7 + i / 960);
    const fs::path image = folder / L"nöise.bmp", result = folder / L"result.bmp";
    saveBitmap(image, width, height, noise);
    const std::wstring chain = L"-f \"Camera Blur:percent blur=20\" -f \"Horizontal Flip\"";
    ASSERT_EQ(run(L"render" + quoted(image) + quoted(result) + chain), 0U);
    const std::string file = content(result);
    std::uint32_t offset = 0;
    std::uint16_t depth = 0;
    std::memcpy(&offset, &file[10], sizeof offset);
    std::memcpy(&depth, &file[28], sizeof depth);
    const std::size_t step = depth / 8;
    std::vector<char> rendered;
    for (std::size_t i = 0; i < std::size_t{width} * height; ++i)
        rendered.insert(rendered.end(), &file[offset + i * step], &file[offset + i * step] + 3);

    const PROCESS_INFORMATION process = preview(quoted(image) + chain);
    ASSERT_NE(window, nullptr);
    EXPECT_TRUE(becomesTrue([&] { return onScreen(window, 0, 0, width, height) == rendered; }));
    wchar_t title[256] = L"";
    GetWindowTextW(window, title, 256);
    EXPECT_NE(std::wstring(title).find(L"nöise.bmp \u2013 Camera Blur, Horizontal Flip"), std::wstring::npos);
    // Only where somebody wants to see it.
    if (const wchar_t* shots = _wgetenv(L"VIREO_SCREENSHOTS"); shots != nullptr)
        saveScreenshot(window, fs::path(shots) / L"preview.bmp");

    RECT frame{0, 0, width + 200, height};
    AdjustWindowRectEx(&frame, static_cast<DWORD>(GetWindowLongW(window, GWL_STYLE)), FALSE, 0);
    SetWindowPos(window, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
                 SWP_NOMOVE | SWP_NOZORDER);
    EXPECT_TRUE(becomesTrue([&] { return onScreen(window, 100, 0, width, height) == rendered; }));
    for (const int left : {0, width + 100})
        EXPECT_EQ(onScreen(window, left, 0, 100, height), std::vector<char>(100 * height * 3));
    EXPECT_EQ(close(process), 0U);
}

TEST_F(PreviewCommand, PlaysAtTheClipsOwnRateStepsAndGoesBack) {
    const PROCESS_INFORMATION process = preview(quoted(saveClip(60)));
    ASSERT_NE(window, nullptr);
    EXPECT_NEAR(pace(), 25, 6);
    type(L' ');
    std::this_thread::sleep_for(300ms);
    const int paused = shownFrame();
    std::this_thread::sleep_for(300ms);
    EXPECT_EQ(shownFrame(), paused);
    type(L'.');
    EXPECT_TRUE(becomesTrue([&] { return shownFrame() == paused + 1; }));
    type(L',');
    type(L',');
    EXPECT_TRUE(becomesTrue([&] { return shownFrame() == paused - 1; }));
    PostMessageW(window, WM_RBUTTONDOWN, 0, MAKELPARAM(0, 5));
    EXPECT_TRUE(becomesTrue([&] { return shownFrame() == 0; }));
    PostMessageW(window, WM_KEYDOWN, VK_RIGHT, 0);
    EXPECT_TRUE(becomesTrue([&] { return shownFrame() == 59; }));
    type(L' ');
    EXPECT_TRUE(becomesTrue([&] { return shownFrame() < 59; })) << "it does not begin again";
    EXPECT_TRUE(becomesTrue([&] { return shownFrame() == 59; })) << "it does not stay at the end";
    type(L'q');
    EXPECT_EQ(finish(process), 0U);
}

TEST_F(PreviewCommand, LeavesFramesOutRatherThanFallingBehind) {
    std::wstring chain;
    for (int i = 0; i < 60; ++i) chain += L" -f \"Camera Blur:percent blur=100\"";
    const PROCESS_INFORMATION process = preview(quoted(saveClip(60)) + L"--jobs 1" + chain);
    ASSERT_NE(window, nullptr);
    EXPECT_NEAR(pace(), 25, 12);
    EXPECT_EQ(close(process), 0U);
}

TEST_F(PreviewCommand, IsWhatTheExplorerStarts) {
    const std::wstring clip = quoted(saveClip(2));
    PROCESS_INFORMATION process = start(clip, L"VireoPreview.exe");
    ASSERT_TRUE(becomesTrue([&] { return (window = FindWindowW(L"VireoPreview", nullptr)) != nullptr; }));
    EXPECT_TRUE(becomesTrue([&] { return shownFrame() == 1; }));
    EXPECT_EQ(close(process), 0U);

    process = start(quoted(folder / L"missing.bmp"), L"VireoPreview.exe");
    const HWND box = waitForWindow(L"Vireo preview");
    PostMessageW(box, WM_COMMAND, IDOK, 0);
    EXPECT_EQ(finish(process), 1U);
}

TEST_F(PreviewCommand, FailsWithoutAWindowWhereThereIsNothingToShow) {
    EXPECT_EQ(run(L"preview" + quoted(folder / L"missing.bmp")), 1U);
    EXPECT_EQ(run(L"preview" + quoted(saveClip(3)) + L"--frames 9-12"), 1U);
}

}  // namespace
