// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include "framework/dialog_window.h"

#include <commctrl.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace {

using namespace std::chrono_literals;

/// Wine swallows faults inside dialog procedures, so they end the program where they happen.
LONG CALLBACK endAtFault(EXCEPTION_POINTERS* fault) {
    if (fault->ExceptionRecord->ExceptionCode == EXCEPTION_ACCESS_VIOLATION) {
        std::fprintf(stderr, "access violation at %p\n", fault->ExceptionRecord->ExceptionAddress);
        TerminateProcess(GetCurrentProcess(), 3);
    }
    return EXCEPTION_CONTINUE_SEARCH;
}

HWND findDialog(DWORD thread) {
    HWND found = nullptr;
    EnumThreadWindows(
        thread,
        [](HWND window, LPARAM result) -> BOOL {
            if (GetPropW(window, workRecordProperty) == nullptr || !IsWindowVisible(window)) return TRUE;
            *reinterpret_cast<HWND*>(result) = window;
            return FALSE;
        },
        reinterpret_cast<LPARAM>(&found));
    return found;
}

void workDialog(DWORD thread, const std::function<void(const Dialog&)>& hand) {
    HWND window = nullptr;
    for (int i = 0; i < 500 && window == nullptr; ++i) {
        std::this_thread::sleep_for(20ms);
        window = findDialog(thread);
    }
    if (window == nullptr) {
        ADD_FAILURE() << "no dialog appears";
        return;
    }
    UpdateWindow(window);
    hand(Dialog(window));
    for (int i = 0; i < 100 && IsWindow(window); ++i) std::this_thread::sleep_for(20ms);
    if (IsWindow(window)) {
        ADD_FAILURE() << "the dialog stays open";
        SendMessageW(window, WM_CLOSE, 0, 0);
    }
}

Picture gradient(int width, int height) {
    Picture picture{width, height};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int grey = x * 255 / width;
            picture.at(x, y) = pixelOf(grey, grey, (x + y) * 255 / (width + height), 255);
        }
    }
    return picture;
}

}  // namespace

std::wstring Dialog::title() const {
    wchar_t text[256];
    GetWindowTextW(window_, text, 256);
    return text;
}

std::wstring Dialog::text(int id) const {
    wchar_t text[256];
    SendMessageW(control(id), WM_GETTEXT, 256, reinterpret_cast<LPARAM>(text));
    return text;
}

int Dialog::slider(int id) const { return static_cast<int>(SendMessageW(control(id), TBM_GETPOS, 0, 0)); }
bool Dialog::checked(int id) const { return SendMessageW(control(id), BM_GETCHECK, 0, 0) == BST_CHECKED; }

RECT Dialog::box(int id) const { return toRect(controlBox(window_, id)); }

COLORREF Dialog::pixel(int x, int y) const {
    const WindowContext context(window_);
    return GetPixel(context.get(), x, y);
}

void Dialog::press(int id) const { SendMessageW(control(id), BM_CLICK, 0, 0); }

void Dialog::slide(int id, int position) const {
    SendMessageW(control(id), TBM_SETPOS, TRUE, position);
    SendMessageW(window_, WM_HSCROLL, MAKEWPARAM(TB_THUMBPOSITION, position),
                 reinterpret_cast<LPARAM>(control(id)));
}

void Dialog::choose(int id, int item) const {
    SendMessageW(control(id), CB_SETCURSEL, static_cast<WPARAM>(item), 0);
    SendMessageW(window_, WM_COMMAND, MAKEWPARAM(id, CBN_SELCHANGE), reinterpret_cast<LPARAM>(control(id)));
}

void Dialog::type(int id, const std::wstring& text) const {
    SendMessageW(window_, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(control(id)), TRUE);
    SendMessageW(control(id), EM_SETSEL, 0, -1);
    for (const wchar_t character : text) SendMessageW(control(id), WM_CHAR, character, 0);
    SendMessageW(window_, WM_NEXTDLGCTL, 0, FALSE);
}

void Dialog::drag(POINT from, POINT to) const {
    SendMessageW(window_, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(from.x, from.y));
    SendMessageW(window_, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(to.x, to.y));
    SendMessageW(window_, WM_LBUTTONUP, 0, MAKELPARAM(to.x, to.y));
}

DialogFixture::DialogFixture(std::uint32_t filterId, const Picture& picture)
    : FilterUnderTest(filterId),
      source({.width = picture.width, .height = picture.height}, picture),
      destination(source.geometry()) {
    static const PVOID handler = AddVectoredExceptionHandler(1, endAtFault);
    EXPECT_NE(handler, nullptr);
    invocation.sourceFrame = source.handle();
    invocation.destFrame = destination.handle();
    invocation.hostCallbacks = host_.callbacks();
}

DialogFixture::DialogFixture(std::uint32_t filterId, int width, int height)
    : DialogFixture(filterId, gradient(width, height)) {}

void DialogFixture::work(int button, const std::function<void(const Dialog&)>& hand) {
    const int handlesBefore = host_.liveHandles();
    const bool hadSettings = invocation.settingsHandle != nullptr;
    std::jthread worker(workDialog, GetCurrentThreadId(), [&](const Dialog& dialog) {
        hand(dialog);
        if (button == 0) SendMessageW(dialog.window(), WM_CLOSE, 0, 0);
        if (button != 0) dialog.press(button);
    });
    EXPECT_EQ(call(FilterSelectorSetup), button == IDCANCEL ? 1 : 0);
    const bool madeSettings = !hadSettings && invocation.settingsHandle != nullptr;
    EXPECT_EQ(host_.liveHandles() - handlesBefore, madeSettings ? 1 : 0) << "handles that nobody released";
}

HWND waitForWindow(const wchar_t* title) {
    for (int i = 0; i < 1000; ++i) {
        const HWND window = FindWindowW(nullptr, title);
        if (window != nullptr && IsWindowVisible(window)) return window;
        std::this_thread::sleep_for(20ms);
    }
    ADD_FAILURE() << "a window does not appear";
    return nullptr;
}

std::vector<char> onScreen(HWND window, int left, int top, int columns, int rows) {
    POINT corner{left, top};
    ClientToScreen(window, &corner);
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    BITMAPINFO info{{sizeof(BITMAPINFOHEADER), columns, rows, 1, 24, BI_RGB, 0, 0, 0, 0, 0}, {}};
    void* bits = nullptr;
    const HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    const HGDIOBJ previous = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, columns, rows, screen, corner.x, corner.y, SRCCOPY);
    GdiFlush();
    const auto* bytes = static_cast<const char*>(bits);
    std::vector<char> pixels(bytes, bytes + std::size_t(columns) * static_cast<std::size_t>(rows) * 3);
    SelectObject(memory, previous);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return pixels;
}

bool becomesTrue(const std::function<bool()>& condition) {
    for (int i = 0; i < 250; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(20ms);
    }
    return false;
}

void saveBitmap(const std::filesystem::path& path, int width, int height, const std::vector<char>& pixels) {
    const auto depth = static_cast<WORD>(8 * pixels.size() / static_cast<std::size_t>(width * height));
    const BITMAPINFOHEADER header{sizeof header, width, height, 1, depth, BI_RGB, 0, 0, 0, 0, 0};
    const auto offset = static_cast<DWORD>(sizeof(BITMAPFILEHEADER) + sizeof header);
    const BITMAPFILEHEADER file{0x4D42, static_cast<DWORD>(offset + pixels.size()), 0, 0, offset};
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&file), sizeof file);
    out.write(reinterpret_cast<const char*>(&header), sizeof header);
    out.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
}

void saveScreenshot(HWND window, const std::filesystem::path& path) {
    RECT rect;
    GetWindowRect(window, &rect);
    const int width = rect.right - rect.left;
    const int height = rect.bottom - rect.top;
    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    const HGDIOBJ previous = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, rect.left, rect.top, SRCCOPY);

    BITMAPINFOHEADER header{sizeof(BITMAPINFOHEADER), width, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    std::vector<char> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    SelectObject(memory, previous);
    GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), pixels.data(),
              reinterpret_cast<BITMAPINFO*>(&header), DIB_RGB_COLORS);
    saveBitmap(path, width, height, pixels);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
}
