// SPDX-License-Identifier: MIT
// The window of Horizontal Hold's settings dialog: a slider for the offset and a live preview.
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

using Record = DialogRecord<DialogModel>;
static_assert(sizeof(Record) <= workRecordBytes);

DialogModel& modelOf(HWND dialog) { return recordOf<Record>(dialog).model; }

const Settings& shownSettings(HWND dialog) {
    modelOf(dialog).slide(static_cast<int>(SendDlgItemMessageW(dialog, sliderId, TBM_GETPOS, 0, 0)));
    return modelOf(dialog).settings();
}

void showPreview(HWND dialog, HDC context) {
    constexpr ClipPosition begin{0, 1000};
    const FilterInvocation& invocation = invocationOf(dialog);
    shiftRows(invocation.sourceFrame, invocation.destFrame, shownSettings(dialog), begin, 1);
    drawPreview(context, invocation.destFrame, modelOf(dialog).preview());
}

void initialise(HWND dialog) {
    DialogModel& model = modelOf(dialog);
    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    SendDlgItemMessageW(dialog, sliderId, TBM_SETRANGE, TRUE, MAKELPARAM(0, DialogModel::largestPosition));
    SendDlgItemMessageW(dialog, sliderId, TBM_SETPOS, TRUE, model.position());
    model.layOut(clientBox(dialog), controlBox(dialog, sliderId));
    centerOverHost(dialog);
}

void accept(HWND dialog) { acceptSettings(dialog, IDOK, shownSettings(dialog)); }

bool handle(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_PAINT: showPreview(dialog, PaintContext(dialog).get()); return true;
        case WM_HSCROLL: showPreview(dialog, WindowContext(dialog).get()); return true;
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

}  // namespace HorizontalHold
