// SPDX-License-Identifier: MIT
#include "tests/windows/dialog_driver.h"

#include "framework/dialog_window.h"
#include "host/heapkit/memory_handles.h"
#include "host/hosting/meta_plugin.h"
#include "host/vireo_host.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <set>
#include <stdexcept>
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

const hosting::MetaPlugin& module() {
    static const hosting::MetaPlugin loaded = [] {
        AddVectoredExceptionHandler(1, endAtFault);
        wchar_t path[MAX_PATH];
        GetModuleFileNameW(nullptr, path, MAX_PATH);
        return hosting::MetaPlugin(std::filesystem::path(path).parent_path() /
                                   L"VireoFiltersMetaPlugin.vrmp");
    }();
    return loaded;
}

std::set<MemoryHandle> liveHandles;

MemoryHandle countedHandle(std::size_t size) {
    const MemoryHandle handle = HeapKit::newHandle(size);
    liveHandles.insert(handle);
    return handle;
}

void disposeCountedHandle(MemoryHandle handle) {
    if (liveHandles.erase(handle) == 0) ADD_FAILURE() << "a handle is released twice";
    HeapKit::disposeHandle(handle);
}

const MemoryFunctions countingMemory{{}, countedHandle, {}, disposeCountedHandle, {}, countedHandle};

const HostCallbacks* countingCallbacks() {
    static const HostCallbacks callbacks = [] {
        HostCallbacks made = *vireoHostCallbacks();
        made.memory = &countingMemory;
        return made;
    }();
    return &callbacks;
}

const TimeBase timeBase{{}, 1};

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
int Dialog::choice(int id) const { return static_cast<int>(SendMessageW(control(id), CB_GETCURSEL, 0, 0)); }
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

DialogFixture::DialogFixture(std::uint32_t filterId, int width, int height) {
    const auto& filters = module().filters();
    const auto filter = std::ranges::find(filters, filterId, &hosting::Filter::id);
    if (filter == filters.end()) throw std::out_of_range("no filter " + std::to_string(filterId));
    entry_ = filter->entry;

    const FrameRect bounds{0, 0, width, height};
    invocation.sourceFrame = vpixNew(&bounds);
    invocation.destFrame = vpixNew(&bounds);
    for (int y = 0; y < height; ++y) {
        auto* row = static_cast<std::uint8_t*>(vpixGetPixels(source())) + y * vpixGetRowbytes(source());
        for (int x = 0; x < width; ++x, row += 4) {
            row[0] = row[1] = static_cast<std::uint8_t>(x * 255 / width);
            row[2] = static_cast<std::uint8_t>((x + y) * 255 / (width + height));
            row[3] = 255;
        }
    }
    invocation.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
    invocation.hostCallbacks = countingCallbacks();
    invocation.timeBase = &timeBase;
}

DialogFixture::~DialogFixture() {
    if (invocation.settingsHandle != nullptr) disposeCountedHandle(invocation.settingsHandle);
    vpixDispose(source());
    vpixDispose(destination());
}

void DialogFixture::work(int button, const std::function<void(const Dialog&)>& hand) {
    FilterInvocation* pointer = &invocation;
    std::jthread worker(workDialog, GetCurrentThreadId(), [&](const Dialog& dialog) {
        hand(dialog);
        if (button == 0) SendMessageW(dialog.window(), WM_CLOSE, 0, 0);
        if (button != 0) dialog.press(button);
    });
    EXPECT_EQ(entry_(nullptr, FilterSelectorSetup, &pointer), button == IDCANCEL ? 1 : 0);
    EXPECT_EQ(liveHandles.size(), invocation.settingsHandle != nullptr ? 1U : 0U)
        << "handles that nobody released";
}

void DialogFixture::storeBytes(const void* bytes, std::size_t size) {
    if (invocation.settingsHandle == nullptr) invocation.settingsHandle = countedHandle(size);
    std::memcpy(*invocation.settingsHandle.get(), bytes, size);
}

std::vector<std::uint8_t> DialogFixture::settings() const {
    const MemoryHandle handle = invocation.settingsHandle;
    if (handle == nullptr) return {};
    const auto* bytes = static_cast<const std::uint8_t*>(*handle);
    return {bytes, bytes + HeapKit::handleSize(handle)};
}

std::vector<std::uint32_t> DialogFixture::pixels(FrameBuffer* frame) const {
    FrameRect bounds;
    vpixGetBounds(frame, &bounds);
    std::vector<std::uint32_t> all;
    for (int y = 0; y < bounds.bottom; ++y) {
        for (int x = 0; x < bounds.right; ++x) all.push_back(vpixGetPixel(frame, x, y));
    }
    return all;
}

void DialogFixture::setPixel(int x, int y, std::uint32_t pixel) {
    const FrameRect one{x, y, x + 1, y + 1};
    vpixFillRect(source(), &one, pixel);
}

void saveScreenshot(HWND window, const std::wstring& path) {
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
    const auto offset = static_cast<DWORD>(sizeof(BITMAPFILEHEADER) + sizeof header);
    const BITMAPFILEHEADER file{0x4D42, static_cast<DWORD>(offset + pixels.size()), 0, 0, offset};
    std::ofstream out(std::filesystem::path(path), std::ios::binary);
    out.write(reinterpret_cast<const char*>(&file), sizeof file);
    out.write(reinterpret_cast<const char*>(&header), sizeof header);
    out.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));

    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
}
