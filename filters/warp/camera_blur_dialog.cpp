// SPDX-License-Identifier: MIT
// The window of Camera Blur's settings dialog: a slider, its read-out and a live preview.
#include "filters/warp/camera_blur_dialog.h"
#include "filters/warp/camera_blur.h"
#include "filters/warp/camera_blur_dialog_model.h"
#include "framework/dialog_window.h"

#include <commctrl.h>

namespace CameraBlur {
namespace {

constexpr int sliderId = 10;
constexpr int readOutId = 12;

constexpr char titleKey[] = "$$$/Strata/VireoFilters/CameraBlur/DialogTitle=Camera Blur Settings";
constexpr LocalisedControl texts[] = {
    {IDOK, "$$$/Strata/VireoFilters/CameraBlur/OKDialogLabel=OK"},
    {IDCANCEL, "$$$/Strata/VireoFilters/CameraBlur/CancelDialogLabel=Cancel"},
};

WorkRecordFields& contextOf(HWND dialog) { return *static_cast<WorkRecordFields*>(*workRecordOf(dialog)); }

FilterInvocation& invocationOf(HWND dialog) { return **contextOf(dialog).invocation; }

int sliderPosition(HWND dialog) {
    return static_cast<int>(SendDlgItemMessageW(dialog, sliderId, TBM_GETPOS, 0, 0));
}

void showReadOut(HWND dialog) {
    SetDlgItemTextW(dialog, readOutId, readOut(contextOf(dialog).settings.amount).c_str());
}

void showPreview(HWND dialog, HDC context) {
    const FilterInvocation& invocation = invocationOf(dialog);
    render(invocation.sourceFrame, invocation.destFrame,
           {static_cast<std::uint16_t>(sliderPosition(dialog))});
    const FrameRect& preview = contextOf(dialog).preview;
    drawPreview(context, invocation.destFrame, {preview.left, preview.top, preview.right, preview.bottom});
}

void initialise(HWND dialog, MemoryHandle record) {
    attachWorkRecord(dialog, record);
    WorkRecordFields& context = contextOf(dialog);
    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    SendDlgItemMessageW(dialog, sliderId, TBM_SETRANGE, FALSE, MAKELPARAM(0, largestAmount));
    SendDlgItemMessageW(dialog, sliderId, TBM_SETPOS, TRUE, context.settings.amount);
    showReadOut(dialog);
    const Box preview = previewBox(clientBox(dialog), controlBox(dialog, sliderId));
    context.preview = {preview.left, preview.top, preview.right, preview.bottom};
    centerOverHost(dialog, invocationOf(dialog));
}

void sliderMoved(HWND dialog) {
    showPreview(dialog, WindowContext(dialog).get());
    contextOf(dialog).settings.amount = static_cast<std::uint16_t>(sliderPosition(dialog));
    showReadOut(dialog);
}

void accept(HWND dialog) {
    acceptSettings(dialog, IDOK, invocationOf(dialog), sizeof(Settings),
                   Settings{static_cast<std::uint16_t>(sliderPosition(dialog))});
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
        case WM_HSCROLL: sliderMoved(dialog); return TRUE;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK) accept(dialog);
            if (LOWORD(wParam) == IDCANCEL) cancelDialog(dialog);
            return TRUE;
        case WM_CLOSE: endDialog(dialog, invocationOf(dialog), lParam); return TRUE;
        default: return FALSE;
    }
}

}  // namespace CameraBlur
