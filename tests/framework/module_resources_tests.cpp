// SPDX-License-Identifier: MIT
// The resources that the module carries, through its own loader, and pictures of the platform's in the built
// library.
#include "framework/module_resources.h"
#include "tests/framework/loaded_module.h"
#include "tests/support/golden_file.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include "host/win32.h"
#endif

namespace {

/// CRC-32 and size of a resource; empty when it is missing.
std::string resource(const char16_t* type, int id) {
    std::size_t size = 0;
    const void* bytes = LoadModuleResource(type, static_cast<std::uint16_t>(id), &size);
    if (bytes == nullptr) return {};
    Checksum checksum;
    checksum.add({static_cast<const std::uint8_t*>(bytes), size});
    ReleaseModuleResource(bytes);
    return checksum.text() + " of " + std::to_string(size) + " bytes";
}

TEST(ModuleResources, HoldTheWavesAndTheLists) {
    GoldenLines lines;
    for (int i = 0; i < 4; ++i) {
        lines["wave " + std::to_string(i)] = resource(u"LOOKUP", 4000 + i);
        lines["list " + std::to_string(i)] = resource(u"TEXT", 2000 + i);
    }
    expectGolden(
        VIREO_RESOURCES,
        "# SPDX-License-Identifier: MIT\n"
        "# CRC-32 of Bend's waves and of its lists' texts; tests/framework/module_resources_tests.cpp "
        "writes this file.\n",
        lines);
}

TEST(ModuleResources, AreFoundByTypeAndIdTogether) {
    for (const char16_t* const type : {u"LOOKUP", u"PiP", u"PiPLX", u""})
        EXPECT_EQ(resource(type, 10049), "");
    for (const int id : {0, 4000, 10000}) EXPECT_EQ(resource(u"PiPL", id), "") << id;
    EXPECT_EQ(LoadDialogTemplate(1), nullptr);
}

TEST(ModuleResources, OutliveTheReferenceThatLoadedThem) {
    std::size_t size = 0;
    const void* const first = LoadModuleResource(u"TEXT", 2000, &size);
    ASSERT_NE(first, nullptr);
    ReleaseModuleResource(first);
    EXPECT_EQ(LoadModuleResource(u"TEXT", 2000, &size), first);
    ReleaseModuleResource(nullptr);
    EXPECT_TRUE(moduleObject());
}

#if defined(_WIN32)

/// Draws an icon onto pink and returns the pixel at (x, y).
COLORREF drawnPixel(HICON icon, int x, int y) {
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, 32, 32);
    const HGDIOBJ previous = SelectObject(memory, bitmap);
    const HBRUSH pink = CreateSolidBrush(RGB(255, 0, 255));
    const RECT all{0, 0, 32, 32};
    FillRect(memory, &all, pink);
    DrawIcon(memory, 0, 0, icon);
    const COLORREF pixel = GetPixel(memory, x, y);
    SelectObject(memory, previous);
    DeleteObject(pink);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return pixel;
}

TEST(LibraryResources, IconsDrawAMarkerInTheTopLeftCorner) {
    constexpr COLORREF pink = RGB(255, 0, 255);
    constexpr COLORREF black = RGB(0, 0, 0);
    const LoadedModule library;
    const std::pair<int, COLORREF> icons[] = {
        {1000, black}, {1001, RGB(128, 128, 128)}, {1002, RGB(255, 255, 255)}};
    for (const auto& [id, fill] : icons) {
        const HICON icon = LoadIconW(static_cast<HINSTANCE>(library.native()), MAKEINTRESOURCEW(id));
        ASSERT_NE(icon, nullptr) << id;
        EXPECT_EQ(drawnPixel(icon, 7, 0), black) << "the tip";
        EXPECT_EQ(drawnPixel(icon, 0, 7), black) << "the left corner";
        EXPECT_EQ(drawnPixel(icon, 14, 7), black) << "the right corner";
        EXPECT_EQ(drawnPixel(icon, 7, 4), fill) << "the body of " << id;
        for (const auto& [x, y] : {std::pair{0, 0}, {14, 0}, {6, 0}, {15, 7}, {7, 8}, {31, 31}}) {
            EXPECT_EQ(drawnPixel(icon, x, y), pink) << x << ", " << y;
        }
    }
}

TEST(LibraryResources, TheEyedropperPicksAtItsTip) {
    const LoadedModule library;
    const HCURSOR cursor = LoadCursorW(static_cast<HINSTANCE>(library.native()), MAKEINTRESOURCEW(10000));
    ASSERT_NE(cursor, nullptr);
    ICONINFO info{};
    ASSERT_TRUE(GetIconInfo(cursor, &info));
    EXPECT_FALSE(info.fIcon);
    EXPECT_EQ(info.xHotspot, 0u);
    EXPECT_EQ(info.yHotspot, 14u);
    DeleteObject(info.hbmMask);
    if (info.hbmColor != nullptr) DeleteObject(info.hbmColor);
}

#endif

}  // namespace
