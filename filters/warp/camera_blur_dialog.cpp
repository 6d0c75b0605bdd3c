// SPDX-License-Identifier: MIT
// The window of Camera Blur's settings dialog: a slider, its read-out and a live preview.
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

using Record = DialogRecord<DialogModel>;
static_assert(sizeof(Record) <= workRecordBytes);

DialogModel& modelOf(HWND dialog) { return recordOf<Record>(dialog).model; }

const Settings& shownSettings(HWND dialog) {
    modelOf(dialog).slide(static_cast<int>(SendDlgItemMessageW(dialog, sliderId, TBM_GETPOS, 0, 0)));
    return modelOf(dialog).settings();
}

void showReadOut(HWND dialog) { SetDlgItemTextW(dialog, readOutId, modelOf(dialog).readOut().c_str()); }

void showPreview(HWND dialog, HDC context) {
    const FilterInvocation& invocation = invocationOf(dialog);
    blur(invocation.sourceFrame, invocation.destFrame, shownSettings(dialog));
    drawPreview(context, invocation.destFrame, modelOf(dialog).preview());
}

void initialise(HWND dialog) {
    DialogModel& model = modelOf(dialog);
    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    SendDlgItemMessageW(dialog, sliderId, TBM_SETRANGE, FALSE, MAKELPARAM(0, DialogModel::largestAmount));
    SendDlgItemMessageW(dialog, sliderId, TBM_SETPOS, TRUE, model.settings().amount);
    showReadOut(dialog);
    model.layOut(clientBox(dialog), controlBox(dialog, sliderId));
    centerOverHost(dialog);
}

void sliderMoved(HWND dialog) {
    showPreview(dialog, WindowContext(dialog).get());
    showReadOut(dialog);
}

void accept(HWND dialog) { acceptSettings(dialog, IDOK, shownSettings(dialog)); }

bool handle(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_PAINT: showPreview(dialog, PaintContext(dialog).get()); return true;
        case WM_HSCROLL: sliderMoved(dialog); return true;
        case WM_COMMAND:
            if (LOWORD(wParam) == IDOK) accept(dialog);
            if (LOWORD(wParam) == IDCANCEL) cancelDialog(dialog);
            return true;
        default: return false;
    }
}

}  // namespace

std::intptr_t dialogProcedure(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    return answerMessage<Settings, Record>({initialise, handle}, window, message, wParam, lParam);
}

}  // namespace CameraBlur
