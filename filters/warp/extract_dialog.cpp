// SPDX-License-Identifier: MIT
// The window of Extract's settings dialog: histogram, range handles, softness, curve and a live preview.
#include "filters/warp/extract_dialog_model.h"
#include "framework/dialog_window.h"

#include <commctrl.h>
#include <windowsx.h>

namespace Extract {
namespace {

constexpr int histogramId = 1080;
constexpr int lowId = 1081;
constexpr int highId = 1082;
constexpr int softnessSliderId = 1083;
constexpr int invertId = 1084;
constexpr int curveId = 1085;
constexpr int softnessId = 1086;
constexpr int lineId = 1087;
constexpr int acceptId = 1034;
constexpr std::uint16_t markerIcon = 1000;

constexpr char titleKey[] = "$$$/Strata/VireoFilters/Extract/Title=Extract Settings";
constexpr LocalisedControl texts[] = {
    {1089, "$$$/Strata/VireoFilters/Extract/InputRange=Input Range:"},
    {1090, "$$$/Strata/VireoFilters/Extract/to=to"},
    {1091, "$$$/Strata/VireoFilters/Extract/SoftnessLabel=&Softness:"},
    {invertId, "$$$/Strata/VireoFilters/Extract/InvertLabel=&Invert"},
    {acceptId, "$$$/Strata/VireoFilters/Extract/OK=OK"},
    {IDCANCEL, "$$$/Strata/VireoFilters/Extract/Cancel=Cancel"},
};

struct FieldControl {
    Field field;
    int id;
    unsigned redraw;
};

constexpr FieldControl fields[] = {
    {Field::Low, lowId, Low}, {Field::High, highId, High}, {Field::Softness, softnessId, Softness}};

using Record = DialogRecord<DialogModel>;
static_assert(sizeof(Record) <= workRecordBytes);

DialogModel& modelOf(HWND dialog) { return recordOf<Record>(dialog).model; }

void drawHistogram(HWND dialog, HDC context) {
    drawBars(context, controlBox(dialog, histogramId),
             [&](const Box& box, int i) { return modelOf(dialog).histogramBar(box, i); });
}

void drawRange(HWND dialog, HDC context) {
    const DialogModel& model = modelOf(dialog);
    const HICON icon = loadMarker(markerIcon);
    const DrawnMarker markers[] = {{icon, model.settings().low}, {icon, model.settings().high}};
    drawMarkers(context, model.strip(), markers);
}

void drawCurve(HWND dialog, HDC context) {
    const TransferCurve curve = transferCurve(modelOf(dialog).settings());
    drawBars(context, controlBox(dialog, curveId),
             [&](const Box& box, int i) { return DialogModel::curveColumn(box, curve, i); });
}

void drawPicture(HWND dialog, HDC context) {
    const FilterInvocation& invocation = invocationOf(dialog);
    drawCurve(dialog, context);
    drawMatte(invocation.sourceFrame, invocation.destFrame, modelOf(dialog).settings());
    drawPreview(context, invocation.destFrame, modelOf(dialog).preview());
}

void writeField(HWND dialog, const FieldControl& field) {
    SetDlgItemInt(dialog, field.id, static_cast<UINT>(modelOf(dialog).valueOf(field.field)), FALSE);
}

void update(HWND dialog, unsigned redraw) {
    if (redraw == Nothing) return;
    const WindowContext context(dialog);
    if ((redraw & (Low | High)) != 0) drawRange(dialog, context.get());
    for (const FieldControl& field : fields) {
        if ((redraw & field.redraw) != 0) writeField(dialog, field);
    }
    if ((redraw & Softness) != 0) {
        SendDlgItemMessageW(dialog, softnessSliderId, TBM_SETPOS, TRUE, modelOf(dialog).settings().softness);
    }
    if ((redraw & Picture) != 0) drawPicture(dialog, context.get());
}

void commit(HWND dialog, const FieldControl& field) {
    const Commit result = modelOf(dialog).commit(field.field, numberIn(dialog, field.id));
    if (result.refused) {
        MessageBeep(0);
        writeField(dialog, field);
    }
    update(dialog, result.redraw);
}

/// Enter commits the field that it is pressed in and keeps the dialog open.
void enterPressed(HWND dialog) {
    for (const FieldControl& field : fields) {
        if (GetFocus() != GetDlgItem(dialog, field.id)) continue;
        commit(dialog, field);
        SendDlgItemMessageW(dialog, field.id, EM_SETSEL, 0, -1);
    }
}

void initialise(HWND dialog) {
    DialogModel& model = modelOf(dialog);
    model.layOut(controlBox(dialog, lineId), controlBox(dialog, histogramId), clientBox(dialog));
    model.countPixels(frameThroughPixKit(invocationOf(dialog).sourceFrame));

    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    SendDlgItemMessageW(dialog, softnessSliderId, TBM_SETRANGE, FALSE,
                        MAKELPARAM(0, DialogModel::largestSoftness));
    SendDlgItemMessageW(dialog, softnessSliderId, TBM_SETPOS, TRUE, model.settings().softness);
    CheckDlgButton(dialog, invertId, model.settings().invert != 0 ? BST_CHECKED : BST_UNCHECKED);
    for (const FieldControl& field : fields) writeField(dialog, field);
    // Enter in a field then commits it instead of pressing the OK button.
    SendMessageW(dialog, DM_SETDEFID, IDOK, 0);
    centerOverHost(dialog);
}

void paint(HWND dialog) {
    const PaintContext context(dialog);
    drawHistogram(dialog, context.get());
    drawRange(dialog, context.get());
    drawPicture(dialog, context.get());
}

void accept(HWND dialog) { acceptSettings(dialog, acceptId, modelOf(dialog).settings()); }

void command(HWND dialog, int id, int notification) {
    switch (id) {
        case acceptId: return accept(dialog);
        case IDCANCEL: cancelDialog(dialog); return;
        case IDOK: return enterPressed(dialog);
        case invertId: return update(dialog, modelOf(dialog).toggleInvert());
        default: break;
    }
    for (const FieldControl& field : fields) {
        if (field.id == id && notification == EN_KILLFOCUS) commit(dialog, field);
    }
}

bool handle(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT: paint(dialog); return true;
        case WM_LBUTTONDOWN: modelOf(dialog).press(GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)); return true;
        case WM_MOUSEMOVE:
            if ((wParam & MK_LBUTTON) != 0) update(dialog, modelOf(dialog).drag(GET_X_LPARAM(lParam)));
            return true;
        case WM_HSCROLL:
            update(dialog, modelOf(dialog).slideSoftness(static_cast<int>(
                               SendDlgItemMessageW(dialog, softnessSliderId, TBM_GETPOS, 0, 0))));
            return true;
        case WM_COMMAND: command(dialog, LOWORD(wParam), HIWORD(wParam)); return true;
        default: return false;
    }
}

}  // namespace

std::intptr_t dialogProcedure(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    return answerMessage<Settings, Record>({initialise, handle}, window, message, wParam, lParam);
}

}  // namespace Extract
