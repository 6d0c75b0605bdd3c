// SPDX-License-Identifier: MIT
// The window of Horizontal Hold's settings dialog: a slider for the offset and a live preview.
#include "filters/color/horizontal_hold_dialog.h"

#include "filters/color/horizontal_hold.h"
#include "filters/color/horizontal_hold_dialog_model.h"
#include "framework/dialog_window.h"

#include <commctrl.h>

namespace HorizontalHold {
namespace {

constexpr int sliderId = 1098;

constexpr char titleKey[] = "$$$/Strata/VireoFilters/HorizontalHold/DialogTitle=Horizontal Hold Settings";
constexpr LocalisedControl texts[] = {
    {1099, "$$$/Strata/VireoFilters/HorizontalHold/OffsetDialogLabel=Offset"},
    {IDOK, "$$$/Strata/VireoFilters/HorizontalHold/OKDialogLabel=OK"},
    {IDCANCEL, "$$$/Strata/VireoFilters/HorizontalHold/CancelDialogLabel=Cancel"},
};

WorkRecordFields& recordOf(HWND dialog) { return *static_cast<WorkRecordFields*>(*workRecordOf(dialog)); }

FilterInvocation& invocationOf(HWND dialog) { return **recordOf(dialog).invocation; }

/// Start and end become one value.
Settings shownSettings(HWND dialog) {
    const auto position = static_cast<int>(SendDlgItemMessageW(dialog, sliderId, TBM_GETPOS, 0, 0));
    return {offsetAt(position), offsetAt(position)};
}

void showPreview(HWND dialog, HDC context) {
    constexpr ClipPosition begin{0, 1000};
    const FilterInvocation& invocation = invocationOf(dialog);
    shiftRows(invocation.sourceFrame, invocation.destFrame, shownSettings(dialog), begin, 1);
    const FrameRect& preview = recordOf(dialog).preview;
    drawPreview(context, invocation.destFrame, {preview.left, preview.top, preview.right, preview.bottom});
}

void initialise(HWND dialog, MemoryHandle record) {
    attachWorkRecord(dialog, record);
    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    SendDlgItemMessageW(dialog, sliderId, TBM_SETRANGE, TRUE, MAKELPARAM(0, largestPosition));
    SendDlgItemMessageW(dialog, sliderId, TBM_SETPOS, TRUE, positionOf(recordOf(dialog).settings.offset));
    const Box preview = previewBox(clientBox(dialog), controlBox(dialog, sliderId));
    recordOf(dialog).preview = {preview.left, preview.top, preview.right, preview.bottom};
    centerOverHost(dialog, invocationOf(dialog));
}

void accept(HWND dialog) {
    acceptSettings(dialog, IDOK, invocationOf(dialog), sizeof(Settings), shownSettings(dialog));
}

}  // namespace

std::intptr_t dialogProcedure(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    const auto dialog = static_cast<HWND>(window);
    if (message == WM_INITDIALOG) {
        initialise(dialog, reinterpret_cast<MemoryHandle>(lParam));
        return TRUE;
    }
    if (workRecordOf(dialog) == nullptr) return FALSE;
    switch (message) {
        case WM_PAINT: showPreview(dialog, PaintContext(dialog).get()); return TRUE;
        case WM_HSCROLL: showPreview(dialog, WindowContext(dialog).get()); return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK) accept(dialog);
            if (LOWORD(wParam) == IDCANCEL) cancelDialog(dialog);
            return TRUE;
        case WM_CLOSE: endDialog(dialog, invocationOf(dialog), lParam); return TRUE;
        default: return FALSE;
    }
}

}  // namespace HorizontalHold
