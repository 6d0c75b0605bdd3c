// SPDX-License-Identifier: MIT
#include "framework/dialog_window.h"

#include "framework/module_resources.h"
#include "host/mtkcore/localizer.h"
#include "host/pixkit/pixkit.h"
#include "host/utilkit/utilkit.h"

bool PaintContext::touches(const Box& area) const {
    const RECT wanted = toRect(area);
    RECT common;
    return IntersectRect(&common, &wanted, &paint_.rcPaint) != 0;
}

OffscreenDrawing::OffscreenDrawing(HDC screen, const Box& target)
    : screen_(screen),
      target_(target),
      memory_(CreateCompatibleDC(screen)),
      bitmap_(CreateCompatibleBitmap(screen, target.width(), target.height())),
      previous_(SelectObject(memory_, bitmap_.get())) {}

OffscreenDrawing::~OffscreenDrawing() {
    BitBlt(screen_, target_.left, target_.top, target_.width(), target_.height(), memory_, 0, 0, SRCCOPY);
    SelectObject(memory_, previous_);
    DeleteDC(memory_);
}

std::wstring localised(const char* key) {
    const std::u16string text = mtkcore::config::Localizer::Get().Translate(key);
    return {text.begin(), text.end()};
}

void setLocalisedTitle(HWND dialog, const char* key) { SetWindowTextW(dialog, localised(key).c_str()); }

void setLocalisedTexts(HWND dialog, std::span<const LocalisedControl> controls) {
    for (const LocalisedControl& control : controls) {
        SetDlgItemTextW(dialog, control.id, localised(control.key).c_str());
    }
}

Box controlBox(HWND dialog, int id) {
    RECT rect;
    GetWindowRect(GetDlgItem(dialog, id), &rect);
    MapWindowPoints(HWND_DESKTOP, dialog, reinterpret_cast<POINT*>(&rect), 2);
    return {rect.left, rect.top, rect.right, rect.bottom};
}

Box clientBox(HWND dialog) {
    RECT rect;
    GetClientRect(dialog, &rect);
    return {rect.left, rect.top, rect.right, rect.bottom};
}

RECT toRect(const Box& box) { return {box.left, box.top, box.right, box.bottom}; }

void fill(HDC context, const Box& box, HBRUSH brush) {
    const RECT rect = toRect(box);
    FillRect(context, &rect, brush);
}

void outline(HDC context, const Box& box) {
    const auto black = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    fill(context, {box.left, box.top, box.right, box.top + 1}, black);
    fill(context, {box.left, box.bottom - 1, box.right, box.bottom}, black);
    fill(context, {box.left, box.top, box.left + 1, box.bottom}, black);
    fill(context, {box.right - 1, box.top, box.right, box.bottom}, black);
}

void drawPreview(HDC context, FrameBuffer* frame, const Box& box) {
    const FrameRect target{box.left, box.top, box.right, box.bottom};
    vpixToScreen(frame, context, &target);
    outline(context, box.grownBy(1));
}

void drawMarkers(HDC context, const MarkerStrip& strip, std::span<const DrawnMarker> markers) {
    const OffscreenDrawing drawing(context, strip.area());
    fill(drawing.get(), boxAt(0, 0, strip.area().width(), strip.area().height()),
         GetSysColorBrush(COLOR_BTNFACE));
    for (const DrawnMarker& marker : markers) {
        DrawIcon(drawing.get(), strip.markerX(marker.value), 0, marker.icon);
    }
}

HICON loadMarker(std::uint16_t id) {
    return LoadIconW(static_cast<HINSTANCE>(moduleObject()->GetNativeModule()), MAKEINTRESOURCEW(id));
}

std::optional<int> numberIn(HWND dialog, int id) {
    BOOL isNumber = FALSE;
    const UINT number = GetDlgItemInt(dialog, id, &isNumber, FALSE);
    constexpr UINT most = 0x7FFFFFFF;
    return isNumber && number <= most ? std::optional(static_cast<int>(number)) : std::nullopt;
}

void centerOverHost(HWND dialog) {
    center_wnd_higher(dialog, invocationOf(dialog).hostCallbacks->window->getMainWindow.get()());
}

void attachWorkRecord(HWND dialog, MemoryHandle record) { SetPropW(dialog, workRecordProperty, record); }

MemoryHandle workRecordOf(HWND dialog) {
    return static_cast<MemoryHandle>(GetPropW(dialog, workRecordProperty));
}

void cancelDialog(HWND dialog) { SendMessageW(dialog, WM_CLOSE, IDCANCEL, 1); }

void releaseWorkRecord(HWND dialog, const FilterInvocation& invocation) {
    const MemoryHandle record = workRecordOf(dialog);
    RemovePropW(dialog, workRecordProperty);
    invocation.hostCallbacks->memory->disposeHandle.get()(record);
}
