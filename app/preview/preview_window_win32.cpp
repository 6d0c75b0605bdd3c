// SPDX-License-Identifier: MIT
#include "app/base/files.h"
#include "app/preview/preview_controls.h"
#include "app/preview/preview_window.h"
#include "engine/error.h"
#include "host/win32.h"

#include <windowsx.h>

#include <algorithm>
#include <cmath>
#include <exception>
#include <future>
#include <mutex>
#include <thread>
#include <utility>

namespace vireo {
namespace {

constexpr wchar_t windowClass[] = L"VireoPreview";
constexpr UINT pictureCame = WM_APP;
constexpr UINT endWished = WM_APP + 1;

constexpr double skippedSeconds = 5;
constexpr int smallestSide = 120;

struct Size {
    int width = 0;
    int height = 0;

    bool operator==(const Size&) const = default;
};

/// Systems that know it would else enlarge the window as they do those of old programs.
void usePixelsOfTheScreen() {
    using Set = DPI_AWARENESS_CONTEXT WINAPI(DPI_AWARENESS_CONTEXT);
    auto* const set = reinterpret_cast<Set*>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"user32.dll"), "SetThreadDpiAwarenessContext")));
    if (set != nullptr) set(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
}

/// The largest of a shape that fits.
Size fitted(Size shape, Size room) {
    const double scale = std::min(static_cast<double>(room.width) / shape.width,
                                  static_cast<double>(room.height) / shape.height);
    const auto scaled = [scale](int side) {
        return std::max(1, static_cast<int>(std::lround(side * scale)));
    };
    return {scaled(shape.width), scaled(shape.height)};
}

Size sizeOf(const RECT& area) { return {area.right - area.left, area.bottom - area.top}; }

/// Rows of bitmaps lie as those of pictures do; what pads them counts as width that is not drawn.
void draw(HDC context, const Picture& picture, int left, int top) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = picture.rowBytes() / 4;
    info.bmiHeader.biHeight = picture.height();
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    SetDIBitsToDevice(context, left, top, static_cast<DWORD>(picture.width()),
                      static_cast<DWORD>(picture.height()), 0, 0, 0, static_cast<UINT>(picture.height()),
                      picture.buffer()->pixels.get(), &info, DIB_RGB_COLORS);
}

}  // namespace

/// All that concerns the window happens on its thread; what others hand over goes through the mutex.
class PreviewWindow::Implementation {
public:
    Implementation(PreviewControls& controls, const std::string& title, Size shape)
        : controls_(controls), title_(pathOf(title).wstring()), shape_(shape) {
        std::promise<void> opened;
        std::future<void> isOpen = opened.get_future();
        thread_ = std::jthread([this, opened = std::move(opened)]() mutable { run(opened); });
        isOpen.get();
    }
    Implementation(const Implementation&) = delete;
    Implementation& operator=(const Implementation&) = delete;
    ~Implementation() { PostMessageW(window_, endWished, 0, 0); }

    void show(PicturePtr picture, const std::string& state) {
        {
            const std::lock_guard lock(mutex_);
            picture_ = std::move(picture);
            state_ = state;
        }
        PostMessageW(window_, pictureCame, 0, 0);
    }

private:
    void run(std::promise<void>& opened) {
        try {
            open();
        } catch (...) {
            opened.set_exception(std::current_exception());
            return;
        }
        opened.set_value();
        MSG message;
        while (GetMessageW(&message, nullptr, 0, 0) > 0) {
            TranslateMessage(&message);
            DispatchMessageW(&message);
        }
    }

    void open() {
        usePixelsOfTheScreen();
        WNDCLASSEXW description{};
        description.cbSize = sizeof description;
        description.style = CS_HREDRAW | CS_VREDRAW;
        description.lpfnWndProc = procedure;
        description.hInstance = GetModuleHandleW(nullptr);
        description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
        description.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
        description.lpszClassName = windowClass;
        RegisterClassExW(&description);

        const Size size = outerSize(initialSize());
        window_ = CreateWindowExW(0, windowClass, title_.c_str(), style, CW_USEDEFAULT, CW_USEDEFAULT,
                                  size.width, size.height, nullptr, nullptr, description.hInstance, this);
        if (window_ == nullptr) throw Error("there is no display to open the preview's window on");
        // A system may place a window so that it reaches out of the screen.
        RECT work{}, area{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
        GetWindowRect(window_, &area);
        const int left = std::max<int>(work.left, std::min<int>(area.left, work.right - size.width));
        const int top = std::max<int>(work.top, std::min<int>(area.top, work.bottom - size.height));
        SetWindowPos(window_, nullptr, left, top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
        ShowWindow(window_, SW_SHOWNORMAL);
        SetForegroundWindow(window_);
    }

    /// One pixel of the screen for each of the picture's, unless the screen is too small.
    Size initialSize() const {
        RECT work{};
        SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
        const Size frame = outerSize({0, 0});
        const Size room{sizeOf(work).width - frame.width, sizeOf(work).height - frame.height};
        const bool fits = shape_.width <= room.width && shape_.height <= room.height;
        return fits ? shape_ : fitted(shape_, room);
    }

    static Size outerSize(Size inner) {
        RECT area{0, 0, inner.width, inner.height};
        AdjustWindowRectEx(&area, style, FALSE, 0);
        return sizeOf(area);
    }

    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NCCREATE) {
            SetWindowLongPtrW(
                window, GWLP_USERDATA,
                reinterpret_cast<LONG_PTR>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams));
        }
        auto* const self = reinterpret_cast<Implementation*>(GetWindowLongPtrW(window, GWLP_USERDATA));
        if (self != nullptr && self->handle(window, message, wParam, lParam)) return 0;
        return DefWindowProcW(window, message, wParam, lParam);
    }

    bool handle(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        switch (message) {
            case pictureCame: takePicture(window); return true;
            case WM_PAINT: paint(window); return true;
            case WM_ERASEBKGND: return true;  // painting covers everything
            case WM_KEYDOWN: return key(window, static_cast<int>(wParam));
            case WM_CHAR: return character(window, static_cast<wchar_t>(wParam));
            case WM_RBUTTONDOWN:
                controls_.jump(std::clamp(
                    static_cast<double>(GET_X_LPARAM(lParam)) / std::max(1, clientSize(window).width), 0.0,
                    1.0));
                return true;
            case WM_GETMINMAXINFO:
                reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {smallestSide, smallestSide};
                return true;
            case WM_CLOSE:
                // Stays until all that shows pictures has ended.
                ShowWindow(window, SW_HIDE);
                controls_.close();
                return true;
            case endWished: DestroyWindow(window); return true;
            case WM_DESTROY: PostQuitMessage(0); return true;
            default: return false;
        }
    }

    bool key(HWND window, int code) {
        switch (code) {
            case VK_LEFT: controls_.skip(-skippedSeconds); return true;
            case VK_RIGHT: controls_.skip(skippedSeconds); return true;
            case VK_HOME: controls_.jump(0); return true;
            case VK_ESCAPE: PostMessageW(window, WM_CLOSE, 0, 0); return true;
            default: return false;
        }
    }

    bool character(HWND window, wchar_t typed) {
        switch (typed) {
            case L' ': controls_.togglePause(); return true;
            case L'.': controls_.step(1); return true;
            case L',': controls_.step(-1); return true;
            case L'q': PostMessageW(window, WM_CLOSE, 0, 0); return true;
            case L'1': {
                const Size size = outerSize(shape_);
                ShowWindow(window, SW_RESTORE);
                SetWindowPos(window, nullptr, 0, 0, size.width, size.height, SWP_NOMOVE | SWP_NOZORDER);
                return true;
            }
            default: return false;
        }
    }

    static Size clientSize(HWND window) {
        RECT area{};
        GetClientRect(window, &area);
        return sizeOf(area);
    }

    void takePicture(HWND window) {
        std::wstring title = title_;
        {
            const std::lock_guard lock(mutex_);
            shown_ = picture_;
            if (!state_.empty()) title += L" \u2013 " + pathOf(state_).wstring();
        }
        scaled_ = nullptr;
        SetWindowTextW(window, title.c_str());
        InvalidateRect(window, nullptr, FALSE);
        UpdateWindow(window);
    }

    void paint(HWND window) {
        PAINTSTRUCT paint;
        const HDC context = BeginPaint(window, &paint);
        const Size room = clientSize(window);
        if (shown_ == nullptr || room.width < 1 || room.height < 1) {
            PatBlt(context, 0, 0, room.width, room.height, BLACKNESS);
        } else {
            const Size size = room == shape_ ? shape_ : fitted(shape_, room);
            const int left = (room.width - size.width) / 2, top = (room.height - size.height) / 2;
            const int right = left + size.width, bottom = top + size.height;
            draw(context, *inSize(size), left, top);
            PatBlt(context, 0, 0, room.width, top, BLACKNESS);
            PatBlt(context, 0, bottom, room.width, room.height - bottom, BLACKNESS);
            PatBlt(context, 0, top, left, size.height, BLACKNESS);
            PatBlt(context, right, top, room.width - right, size.height, BLACKNESS);
        }
        EndPaint(window, &paint);
    }

    PicturePtr inSize(Size size) {
        if (Size{shown_->width(), shown_->height()} == size) return shown_;
        if (scaled_ == nullptr || Size{scaled_->width(), scaled_->height()} != size) {
            const auto scaled = std::make_shared<Picture>(size.width, size.height);
            drawScaled(*shown_, *scaled, {0, 0, size.width, size.height});
            scaled_ = scaled;
        }
        return scaled_;
    }

    static constexpr DWORD style = WS_OVERLAPPEDWINDOW;

    PreviewControls& controls_;
    const std::wstring title_;
    const Size shape_;  ///< Of the picture with square pixels.
    HWND window_ = nullptr;
    PicturePtr shown_;
    PicturePtr scaled_;  ///< What is shown, in the window's size; null until it is painted.

    std::mutex mutex_;
    PicturePtr picture_;
    std::string state_;

    std::jthread thread_;
};

PreviewWindow::PreviewWindow(PreviewControls& controls, const std::string& title, int width, int height,
                             double pixelAspect)
    : implementation_(std::make_unique<Implementation>(
          controls, title,
          pixelAspect > 1 ? Size{static_cast<int>(std::lround(width * pixelAspect)), height}
                          : Size{width, static_cast<int>(std::lround(height / pixelAspect))})) {}

PreviewWindow::~PreviewWindow() = default;

void PreviewWindow::show(PicturePtr picture, const std::string& state) {
    implementation_->show(std::move(picture), state);
}

}  // namespace vireo
