// SPDX-License-Identifier: MIT
// The resources that the module carries, through its own loader and, where libraries hold resources of the
// platform's, through the built library.
#include "framework/module_resources.h"
#include "tests/framework/loaded_module.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <numeric>
#include <string>

#if defined(_WIN32)
#include "host/win32.h"
#endif

namespace {

/// A resource's bytes; empty when it is missing.
std::string resource(const char16_t* type, std::uint16_t id) {
    std::size_t size = 0;
    const void* bytes = LoadModuleResource(type, id, &size);
    if (bytes == nullptr) return {};
    std::string copy(static_cast<const char*>(bytes), size);
    ReleaseModuleResource(bytes);
    return copy;
}

std::vector<int> wave(std::uint16_t id) {
    const std::string bytes = resource(u"LOOKUP", id);
    std::vector<std::int16_t> table(bytes.size() / 2);
    std::memcpy(table.data(), bytes.data(), 2 * table.size());
    return {table.begin(), table.end()};
}

/// Checks entries of a wave given as index and value.
void expectEntries(const std::vector<int>& table,
                   std::initializer_list<std::pair<std::size_t, int>> entries) {
    ASSERT_EQ(table.size(), 4000u);
    for (const auto& [index, value] : entries) EXPECT_EQ(table[index], value) << "entry " << index;
}

TEST(WaveTables, SineUsesTheShortPi) {
    const std::vector<int> sine = wave(4000);
    expectEntries(sine,
                  {{0, 0}, {1, 50}, {500, 22627}, {1000, 31999}, {2000, 0}, {3000, -31999}, {3999, -50}});
    EXPECT_EQ(*std::max_element(sine.begin(), sine.end()), 31999);
    EXPECT_EQ(*std::min_element(sine.begin(), sine.end()), -31999);
}

TEST(WaveTables, CircleHasItsNegativeHalfOneStepAhead) {
    const std::vector<int> circle = wave(4001);
    expectEntries(circle, {{0, 0},
                           {1, 1430},
                           {1000, 32000},
                           {1999, 1430},
                           {2000, -1430},
                           {2999, -32000},
                           {3998, -1430},
                           {3999, 0}});
    for (std::size_t i = 1; i < 2000; ++i) ASSERT_EQ(circle[i], -circle[1999 + i]) << i;
}

TEST(WaveTables, TriangleAndSquareAreExact) {
    expectEntries(wave(4002), {{0, 0},
                               {1, 32},
                               {1000, 32000},
                               {1001, 31968},
                               {2000, 0},
                               {3000, -32000},
                               {3001, -31968},
                               {3999, -32}});
    const std::vector<int> triangle = wave(4002);
    EXPECT_EQ(std::accumulate(triangle.begin(), triangle.end(), 0), 0);
    expectEntries(wave(4003), {{0, 32000}, {1999, 32000}, {2000, -32000}, {3999, -32000}});
    const std::vector<int> square = wave(4003);
    EXPECT_EQ(std::count(square.begin(), square.end(), 32000), 2000);
    EXPECT_EQ(std::count(square.begin(), square.end(), -32000), 2000);
}

TEST(TextLists, AreRunsOfKeysThatEndInAnEmptyOne) {
    const std::string key = "$$$/Strata/VireoFilters/Bend/";
    const auto list = [&](std::initializer_list<const char*> words) {
        std::string text;
        for (const char* word : words) text += key + word + '\0';
        return text + '\0';
    };
    EXPECT_EQ(resource(u"TEXT", 2000),
              list({"HDirLeft=Left", "HDirRight=Right", "HDirIn=In", "HDirOut=Out"}));
    EXPECT_EQ(resource(u"TEXT", 2001),
              list({"HWaveSine=Sine", "HWaveCircle=Circle", "HWaveTriangle=Triangle", "HWaveSquare=Square"}));
    EXPECT_EQ(resource(u"TEXT", 2002), list({"VDirUp=Up", "VDirDown=Down", "VDirIn=In", "VDirOut=Out"}));
    EXPECT_EQ(resource(u"TEXT", 2003),
              list({"VWaveSine=Sine", "VWaveCircle=Circle", "VWaveTriangle=Triangle", "VWaveSquare=Square"}));
}

TEST(ModuleResources, AreFoundByTypeAndIdTogether) {
    for (const auto& [type, id] : {std::pair{u"PiPL", 10000},
                                   {u"PiPL", 4000},
                                   {u"LOOKUP", 10049},
                                   {u"LOOKUP", 4004},
                                   {u"TEXT", 0},
                                   {u"TEXT", 1999},
                                   {u"PiP", 10049},
                                   {u"PiPLX", 10049},
                                   {u"", 10049}}) {
        EXPECT_EQ(resource(type, static_cast<std::uint16_t>(id)), "") << id;
    }
    EXPECT_EQ(LoadDialogTemplate(1), nullptr);
}

TEST(ModuleResources, OutliveTheReferenceThatLoadedThem) {
    std::size_t size = 0;
    const auto* first = static_cast<const char*>(LoadModuleResource(u"TEXT", 2000, &size));
    ASSERT_NE(first, nullptr);
    ReleaseModuleResource(first);
    EXPECT_EQ(LoadModuleResource(u"TEXT", 2000, &size), first);
    ReleaseModuleResource(nullptr);
    EXPECT_TRUE(moduleObject());
}

#if defined(_WIN32)

TEST(LibraryResources, HoldPropertyListsIconsAndTheEyedropper) {
    const LoadedModule library;
    const auto module = QRB::Module::Create(library.native());
    const auto type = [](LPWSTR name) { return reinterpret_cast<const char16_t*>(name); };
    const struct {
        const char16_t* type;
        std::uint16_t id;
    } resources[] = {{u"PiPL", 10001},
                     {u"PIPL", 10035},
                     {u"LOOKUP", 4003},
                     {u"TEXT", 2003},
                     {type(RT_GROUP_ICON), 1000},
                     {type(RT_GROUP_ICON), 1001},
                     {type(RT_GROUP_ICON), 1002},
                     {type(RT_GROUP_CURSOR), 10000}};
    for (const auto& resource : resources) {
        std::size_t size = 0;
        EXPECT_NE(module->LoadResource(resource.type, resource.id, &size), nullptr) << resource.id;
        EXPECT_GT(size, 0u) << resource.id;
    }
}

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
