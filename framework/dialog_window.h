// SPDX-License-Identifier: MIT
// What the settings dialogs' windows share. Windows only; the rules of each dialog stand in its model.
#ifndef VIREO_FRAMEWORK_DIALOG_WINDOW_H
#define VIREO_FRAMEWORK_DIALOG_WINDOW_H

#include "framework/dialog_geometry.h"
#include "framework/dialog_launcher.h"
#include "framework/settings.h"
#include "host/win32.h"

#include "host/mtkcore/localizer.h"
#include "host/vrm/filter_invocation.h"

#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <utility>

/// The window property that holds a dialog's work record.
inline constexpr wchar_t workRecordProperty[] = L"DREFHI";

/// A GDI object that is deleted with its owner.
template <class Handle>
class GdiObject {
public:
    GdiObject() = default;
    explicit GdiObject(Handle handle) : handle_(handle) {}
    GdiObject(GdiObject&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    GdiObject& operator=(GdiObject&& other) noexcept {
        std::swap(handle_, other.handle_);
        return *this;
    }
    ~GdiObject() {
        if (handle_ != nullptr) DeleteObject(handle_);
    }

    Handle get() const { return handle_; }

private:
    Handle handle_ = nullptr;
};

/// A device context of a window outside WM_PAINT.
class WindowContext {
public:
    explicit WindowContext(HWND window) : window_(window), context_(GetDC(window)) {}
    WindowContext(const WindowContext&) = delete;
    WindowContext& operator=(const WindowContext&) = delete;
    ~WindowContext() { ReleaseDC(window_, context_); }

    HDC get() const { return context_; }

private:
    HWND window_;
    HDC context_;
};

/// The device context of WM_PAINT.
class PaintContext {
public:
    explicit PaintContext(HWND window) : window_(window) { BeginPaint(window, &paint_); }
    PaintContext(const PaintContext&) = delete;
    PaintContext& operator=(const PaintContext&) = delete;
    ~PaintContext() { EndPaint(window_, &paint_); }

    HDC get() const { return paint_.hdc; }

    /// Whether any of the area wants painting.
    bool touches(const Box& area) const;

private:
    HWND window_;
    PAINTSTRUCT paint_;
};

/// A drawing that is made off-screen and shown at once, so that nothing flickers.
class OffscreenDrawing {
public:
    /// Shows what was drawn at `target` when it goes. The drawing's own origin is 0, 0.
    OffscreenDrawing(HDC screen, const Box& target);
    OffscreenDrawing(const OffscreenDrawing&) = delete;
    OffscreenDrawing& operator=(const OffscreenDrawing&) = delete;
    ~OffscreenDrawing();

    HDC get() const { return memory_; }

private:
    HDC screen_;
    Box target_;
    HDC memory_;
    GdiObject<HBITMAP> bitmap_;
    HGDIOBJ previous_;
};

/// A dialog's text and the key that it shows in the host's language.
struct LocalisedControl {
    int id;
    const char* key;
};

std::wstring localised(const char* key);
void setLocalisedTitle(HWND dialog, const char* key);
void setLocalisedTexts(HWND dialog, std::span<const LocalisedControl> controls);

/// Of a control, in the client coordinates of its dialog.
Box controlBox(HWND dialog, int id);
Box clientBox(HWND dialog);

RECT toRect(const Box& box);

/// One pixel of black around the inside of the box.
void outline(HDC context, const Box& box);
void fill(HDC context, const Box& box, HBRUSH brush);

/// Shows a frame scaled into the box, with a black line around it.
void drawPreview(HDC context, FrameBuffer* frame, const Box& box);

/// A marker of a strip: its picture and the value that it points at.
struct DrawnMarker {
    HICON icon;
    int value;
};

/// Draws 256 black bars over the colour of windows. `bar(box, i)` places one in a box of the same size at 0,
/// 0.
template <class Bar>
void drawBars(HDC context, const Box& box, Bar&& bar) {
    const OffscreenDrawing drawing(context, box);
    const Box inside = boxAt(0, 0, box.width(), box.height());
    fill(drawing.get(), inside, GetSysColorBrush(COLOR_WINDOW));
    for (int i = 0; i < 256; ++i) {
        fill(drawing.get(), bar(inside, i), static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    }
}

/// Draws a strip's markers over the colour of buttons, in the order given.
void drawMarkers(HDC context, const MarkerStrip& strip, std::span<const DrawnMarker> markers);

/// One of the module's marker pictures; the system keeps it.
HICON loadMarker(std::uint16_t id);

/// The whole number in an edit field; empty where it is none or below 0.
std::optional<int> numberIn(HWND dialog, int id);

/// What every dialog's record begins with.
struct DialogHead {
    FilterInvocation** invocation;
};

/// The work record while its dialog is open.
template <class DialogModel>
struct DialogRecord : DialogHead {
    template <class Settings>
    explicit DialogRecord(const DialogStart<Settings>& start)
        : DialogHead{start.invocation}, model(start.settings) {}

    DialogModel model;
};

/// The handle that the window holds; null before the dialog is initialised and after it has ended.
MemoryHandle workRecordOf(HWND dialog);

template <class Record>
Record& recordOf(HWND dialog) {
    return *static_cast<Record*>(*workRecordOf(dialog));
}

inline FilterInvocation& invocationOf(HWND dialog) { return **recordOf<DialogHead>(dialog).invocation; }

/// Over the host's main window.
void centerOverHost(HWND dialog);

/// What OK does: stores the settings, in a new handle where there is none, and closes the dialog.
template <class Settings>
void acceptSettings(HWND dialog, int commandId, const Settings& settings) {
    FilterInvocation& invocation = invocationOf(dialog);
    if (ensureSettingsHandle(invocation, sizeof settings)) writeSettings(invocation.settingsHandle, settings);
    SendMessageW(dialog, WM_CLOSE, static_cast<WPARAM>(commandId), 0);
}

/// What Cancel does: closes the dialog and stores nothing.
void cancelDialog(HWND dialog);

/// Keeps the work record on the window.
void attachWorkRecord(HWND dialog, MemoryHandle record);

/// Takes the record off the window and gives it back to the host.
void releaseWorkRecord(HWND dialog, const FilterInvocation& invocation);

/// What a dialog does at its messages. `handle` gets those between initialisation and WM_CLOSE and tells
/// whether it has answered one.
struct DialogHandlers {
    void (*initialise)(HWND dialog);
    bool (*handle)(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam);
};

/// The procedure of a dialog whose record is made from what Setup left. WM_CLOSE ends it with the low word of
/// lParam, sign-extended.
template <class Settings, class Record>
std::intptr_t answerMessage(const DialogHandlers& handlers, void* window, unsigned message,
                            std::uintptr_t wParam, std::intptr_t lParam) {
    const auto dialog = static_cast<HWND>(window);
    if (message == WM_INITDIALOG) {
        const auto handle = reinterpret_cast<MemoryHandle>(lParam);
        const auto start = *static_cast<const DialogStart<Settings>*>(*handle);
        new (*handle) Record(start);
        attachWorkRecord(dialog, handle);
        handlers.initialise(dialog);
        return TRUE;
    }
    if (workRecordOf(dialog) == nullptr) return FALSE;
    if (message != WM_CLOSE) return handlers.handle(dialog, message, wParam, lParam) ? TRUE : FALSE;
    const FilterInvocation& invocation = invocationOf(dialog);
    std::destroy_at(&recordOf<Record>(dialog));
    releaseWorkRecord(dialog, invocation);
    EndDialog(dialog, static_cast<std::int16_t>(LOWORD(lParam)));
    return TRUE;
}

#endif
