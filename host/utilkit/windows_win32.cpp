// SPDX-License-Identifier: MIT
#include "host/utilkit/utilkit.h"
#include "host/utilkit/window_place.h"
#include "host/win32.h"

#include <commdlg.h>

namespace {

FrameRect frameRect(const RECT& rect) {
    return {static_cast<std::int32_t>(rect.left), static_cast<std::int32_t>(rect.top),
            static_cast<std::int32_t>(rect.right), static_cast<std::int32_t>(rect.bottom)};
}

}  // namespace

void center_wnd_higher(void* window, void* over) {
    const auto moved = static_cast<HWND>(window);
    const auto base = static_cast<HWND>(over);
    RECT size;
    if (!GetWindowRect(moved, &size)) return;
    RECT place;
    const bool hasPlace = base != nullptr && !IsIconic(base) && GetWindowRect(base, &place);
    MONITORINFO monitor{};
    monitor.cbSize = sizeof monitor;
    GetMonitorInfoW(MonitorFromWindow(hasPlace ? base : moved, MONITOR_DEFAULTTONEAREST), &monitor);

    const FrameRect workArea = frameRect(monitor.rcWork);
    const UtilKit::Position position = UtilKit::higherPlace(static_cast<std::int32_t>(size.right - size.left),
                                                            static_cast<std::int32_t>(size.bottom - size.top),
                                                            hasPlace ? frameRect(place) : workArea, workArea);
    SetWindowPos(moved, nullptr, position.x, position.y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

std::uint32_t vrColorPicker(void* owner, std::uint32_t color) {
    static COLORREF customColors[16] = {};  // Kept while the host runs, as users expect.
    CHOOSECOLORW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = static_cast<HWND>(owner);
    dialog.rgbResult = color;
    dialog.lpCustColors = customColors;
    dialog.Flags = CC_RGBINIT | CC_FULLOPEN | CC_ANYCOLOR;
    return ChooseColorW(&dialog) ? dialog.rgbResult : color;
}
