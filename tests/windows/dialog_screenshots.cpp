// SPDX-License-Identifier: MIT
// Shows every dialog in every language over a picture and saves what the screen shows.
//   dialog_screenshots PICTURE.bmp FOLDER
#include "tests/windows/dialog_driver.h"
#include "tests/windows/dialog_languages.h"

#include "framework/dialog_window.h"
#include "host/vireo_host.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <thread>

namespace {

/// Bitmaps lie in memory as frames do, the bottom row first.
Picture pictureOf(HBITMAP bitmap) {
    BITMAP shape;
    if (GetObjectW(bitmap, sizeof shape, &shape) == 0) throw std::runtime_error("the picture cannot be read");
    Picture picture{shape.bmWidth, shape.bmHeight};
    const WindowContext screen(nullptr);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof info.bmiHeader, shape.bmWidth, shape.bmHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    GetDIBits(screen.get(), bitmap, 0, static_cast<UINT>(shape.bmHeight), picture.pixels.data(), &info,
              DIB_RGB_COLORS);
    return picture;
}

void saveDialogs(const Picture& picture, const std::filesystem::path& folder) {
    for (const NamedLanguage& language : dialogLanguages) {
        vireoHostSetLanguage(language.id);
        for (const NamedFilter& filter : dialogFilters) {
            DialogFixture fixture(filter.id, picture);
            fixture.work(IDCANCEL, [&](const Dialog& dialog) {
                // The first window of a display has no focus; it looks like the others.
                SendMessageW(dialog.window(), WM_NCACTIVATE, TRUE, 0);
                // Time to paint.
                std::this_thread::sleep_for(std::chrono::milliseconds(400));
                const std::string name = std::string(filter.name) + '-' + language.name + ".bmp";
                saveScreenshot(dialog.window(), folder / name);
            });
        }
    }
}

}  // namespace

int main(int count, char** arguments) try {
    testing::InitGoogleTest(&count, arguments);
    if (count != 3) throw std::runtime_error("dialog_screenshots PICTURE.bmp FOLDER");
    const GdiObject bitmap(static_cast<HBITMAP>(
        LoadImageA(nullptr, arguments[1], IMAGE_BITMAP, 0, 0, LR_LOADFROMFILE | LR_CREATEDIBSECTION)));
    saveDialogs(pictureOf(bitmap.get()), arguments[2]);
    return 0;
} catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
}
