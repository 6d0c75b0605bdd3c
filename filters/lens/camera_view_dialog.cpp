// SPDX-License-Identifier: MIT
// The window of Camera View's settings dialog: six rows of slider and edit box, the fill, and a live preview.
#include "filters/lens/camera_view_dialog_model.h"
#include "framework/dialog_numbers.h"
#include "framework/dialog_window.h"
#include "framework/module_resources.h"
#include "host/pixkit/pixkit.h"
#include "host/qrb/locale.h"
#include "host/utilkit/utilkit.h"

#include <commctrl.h>
#include <windowsx.h>

namespace CameraView {
namespace {

constexpr int sampleId = 30;
constexpr int swatchId = 31;
constexpr int resetId = 1240;
constexpr int groupId = 1251;
constexpr int fillAlphaId = 1253;
constexpr std::uint16_t eyedropperCursor = 10000;

constexpr char titleKey[] = "$$$/Strata/VireoFilters/CameraView/DialogTitle=Camera View Settings";
constexpr LocalisedControl texts[] = {
    {IDOK, "$$$/Strata/VireoFilters/CameraView/OKDialogLabel=OK"},
    {IDCANCEL, "$$$/Strata/VireoFilters/CameraView/CancelDialogLabel=Cancel"},
    {resetId, "$$$/Strata/VireoFilters/CameraView/ResetDialogLabel=Reset"},
    {1241, "$$$/Strata/VireoFilters/CameraView/MinDialogLabel=Min"},
    {1242, "$$$/Strata/VireoFilters/CameraView/MaxDialogLabel=Max"},
    {1243, "$$$/Strata/VireoFilters/CameraView/LongitudeDialogLabel=Longitude"},
    {1244, "$$$/Strata/VireoFilters/CameraView/LatitudeDialogLabel=Latitude"},
    {1245, "$$$/Strata/VireoFilters/CameraView/RollDialogLabel=Roll"},
    {1246, "$$$/Strata/VireoFilters/CameraView/FocalLengthDialogLabel=Focal Length"},
    {1247, "$$$/Strata/VireoFilters/CameraView/DistanceDialogLabel=Distance"},
    {1248, "$$$/Strata/VireoFilters/CameraView/ZoomDialogLabel=Zoom"},
    {1249, "$$$/Strata/VireoFilters/CameraView/FillDialogLabel=Fill"},
    {1250, "$$$/Strata/VireoFilters/CameraView/SettingsDialogLabel=Settings"},
    {groupId, "$$$/Strata/VireoFilters/CameraView/SampleDialogLabel=Sample"},
    {1252, "$$$/Strata/VireoFilters/CameraView/ColorDialogLabel=Color"},
    {fillAlphaId, "$$$/Strata/VireoFilters/CameraView/FillAlphaChannelDialogLabel=Fill Alpha Channel"},
};

using Record = DialogRecord<DialogModel>;
static_assert(sizeof(Record) <= workRecordBytes);

DialogModel& modelOf(HWND dialog) { return recordOf<Record>(dialog).model; }

int editId(Row row) { return rows[row].sliderId + 1; }

int positionOf(HWND dialog, Row row) {
    return static_cast<int>(SendDlgItemMessageW(dialog, rows[row].sliderId, TBM_GETPOS, 0, 0));
}

void moveSlider(HWND dialog, Row row, int position) {
    SendDlgItemMessageW(dialog, rows[row].sliderId, TBM_SETPOS, TRUE, position);
}

Positions positionsOf(HWND dialog) {
    Positions positions;
    for (std::size_t row = 0; row < rows.size(); ++row) positions[row] = positionOf(dialog, Row(row));
    return positions;
}

void writeEdit(HWND dialog, Row row, int value) {
    const DialogModel::OwnWriting writing(modelOf(dialog));
    modelOf(dialog).write(row, value);
    if (row == Zoom) {
        const std::u16string text = FormatDialogNumber(static_cast<float>(value * 0.01), true, 2);
        SetDlgItemTextW(dialog, editId(row), reinterpret_cast<const wchar_t*>(text.c_str()));
    } else {
        SetDlgItemInt(dialog, editId(row), static_cast<UINT>(value), TRUE);
    }
}

void writeEdits(HWND dialog) {
    for (std::size_t row = 0; row < rows.size(); ++row) {
        const int position = positionOf(dialog, Row(row));
        const bool isLength = row == FocalLength || row == Distance;
        if (isLength && modelOf(dialog).written(Row(row)) == position) continue;
        writeEdit(dialog, Row(row), position);
    }
}

void drawSwatch(HWND dialog, HDC context) {
    const Box& swatch = modelOf(dialog).swatch();
    outline(context, swatch);
    const GdiObject<HBRUSH> color(CreateSolidBrush(modelOf(dialog).fillColor() & 0x00FFFFFF));
    fill(context, swatch.grownBy(-1), color.get());
}

void showPreview(HWND dialog, HDC context) {
    DialogModel& model = modelOf(dialog);
    if (!model.takePositions(positionsOf(dialog))) return;
    const FilterInvocation& invocation = invocationOf(dialog);
    project(invocation.sourceFrame, invocation.destFrame, model.settings(), LensSteps{1, 1});
    drawPreview(context, invocation.sourceFrame, model.sample());
    drawPreview(context, invocation.destFrame, model.preview());
}

void initialise(HWND dialog) {
    DialogModel& model = modelOf(dialog);
    const DialogModel::OwnWriting writing(model);
    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        // Ranges reach beyond what two 16-bit halves of one message hold signed, so each end is set by
        // itself.
        SendDlgItemMessageW(dialog, rows[row].sliderId, TBM_SETRANGEMIN, FALSE, rows[row].smallest);
        SendDlgItemMessageW(dialog, rows[row].sliderId, TBM_SETRANGEMAX, FALSE, rows[row].largest);
        moveSlider(dialog, Row(row), model.valueOf(Row(row)));
    }
    if (model.fillsAlphaChannel()) CheckDlgButton(dialog, fillAlphaId, BST_CHECKED);
    model.layOut(controlBox(dialog, sampleId), controlBox(dialog, swatchId), controlBox(dialog, groupId));
    centerOverHost(dialog);
}

void paint(HWND dialog) {
    const PaintContext context(dialog);
    modelOf(dialog).forgetShown();
    drawSwatch(dialog, context.get());
    showPreview(dialog, context.get());
    writeEdits(dialog);
}

Edit typedInto(HWND dialog, Row row) {
    if (isAngle(row))
        return DialogModel::editAngle(static_cast<int>(GetDlgItemInt(dialog, editId(row), nullptr, FALSE)));
    if (row != Zoom) return modelOf(dialog).editLength(row, numberIn(dialog, editId(row)));
    wchar_t text[64];
    GetDlgItemTextW(dialog, editId(row), text, static_cast<int>(std::size(text)));
    double typed = 0;
    // A number that is only half typed is left alone.
    if (!QRB::Locale::GetValueFromDisplayString(reinterpret_cast<const char16_t*>(text), &typed)) return {};
    return DialogModel::editZoom(positionOf(dialog, Zoom), typed);
}

void editChanged(HWND dialog, Row row, LPARAM lParam) {
    if (modelOf(dialog).isWriting()) return;
    const Edit edit = typedInto(dialog, row);
    if (edit.beep) MessageBeep(0);
    if (edit.writeBack) writeEdit(dialog, row, *edit.writeBack);
    if (edit.slider) {
        moveSlider(dialog, row, *edit.slider);
        modelOf(dialog).write(row, *edit.slider);
        showPreview(dialog, WindowContext(dialog).get());
    } else if (row == FocalLength || row == Distance) {
        // The last value goes to the slider's window text, not to the edit box: what was refused stays
        // visible.
        SetDlgItemTextW(dialog, rows[row].sliderId, std::to_wstring(modelOf(dialog).written(row)).c_str());
    }
    if (LOWORD(lParam) == 0xFFFF) SendDlgItemMessageW(dialog, editId(row), EM_SETSEL, 0, 32767);
}

/// No handler answers it: the preview waits for the next change or paint.
void sendChangeCommand(HWND dialog) { SendMessageW(dialog, WM_COMMAND, rows[Longitude].sliderId, 0); }

void resetAll(HWND dialog) {
    DialogModel& model = modelOf(dialog);
    model.reset();
    for (std::size_t row = 0; row < rows.size(); ++row) moveSlider(dialog, Row(row), model.valueOf(Row(row)));
    writeEdits(dialog);
    CheckDlgButton(dialog, fillAlphaId, BST_CHECKED);
    drawSwatch(dialog, WindowContext(dialog).get());
    sendChangeCommand(dialog);
}

bool buttonIsDown() {
    return (GetAsyncKeyState(VK_LBUTTON) & 0x8000) != 0 || (GetAsyncKeyState(VK_RBUTTON) & 0x8000) != 0;
}

/// Follows the pointer over the source picture until the buttons are released.
void sampleColor(HWND dialog) {
    constexpr DWORD pause = 10;  // Milliseconds.
    DialogModel& model = modelOf(dialog);
    FrameBuffer* source = invocationOf(dialog).sourceFrame;
    FrameRect bounds;
    vpixGetBounds(source, &bounds);
    const WindowContext context(dialog);
    do {
        POINT pointer;
        GetCursorPos(&pointer);
        ScreenToClient(dialog, &pointer);
        if (const auto point = model.sampledPoint(pointer.x, pointer.y, bounds)) {
            model.fillWith(colorOfPixel(vpixGetPixel(source, point->x, point->y)));
            drawSwatch(dialog, context.get());
        }
        Sleep(pause);
    } while (buttonIsDown());
    model.redraw();
}

void pickColor(HWND dialog) {
    DialogModel& model = modelOf(dialog);
    const std::uint32_t picked = vrColorPicker(dialog, model.fillColor());
    if (picked == model.fillColor()) return;
    model.fillWith(picked);
    model.redraw();
    drawSwatch(dialog, WindowContext(dialog).get());
}

void press(HWND dialog, int x, int y) {
    const DialogModel& model = modelOf(dialog);
    if (model.swatch().contains(x, y)) {
        pickColor(dialog);
    } else if (model.sample().contains(x, y)) {
        sampleColor(dialog);
    } else {
        return;
    }
    showPreview(dialog, WindowContext(dialog).get());
    sendChangeCommand(dialog);
}

void setCursor(HWND dialog) {
    POINT pointer;
    GetCursorPos(&pointer);
    ScreenToClient(dialog, &pointer);
    const bool overSample = modelOf(dialog).sample().contains(pointer.x, pointer.y);
    SetCursor(overSample ? LoadCursorW(static_cast<HINSTANCE>(moduleObject()->GetNativeModule()),
                                       MAKEINTRESOURCEW(eyedropperCursor))
                         : LoadCursorW(nullptr, IDC_ARROW));
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, TRUE);
}

void accept(HWND dialog) {
    DialogModel& model = modelOf(dialog);
    model.takePositions(positionsOf(dialog));
    acceptSettings(dialog, IDOK, model.settings());
}

void command(HWND dialog, int id, int notification, LPARAM lParam) {
    switch (id) {
        case IDOK: return accept(dialog);
        case IDCANCEL: cancelDialog(dialog); return;
        case resetId: return resetAll(dialog);
        case fillAlphaId:
            modelOf(dialog).fillAlphaChannel(IsDlgButtonChecked(dialog, fillAlphaId) == BST_CHECKED);
            return;
        default: break;
    }
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (id == editId(Row(row)) && notification == EN_CHANGE) editChanged(dialog, Row(row), lParam);
    }
}

bool handle(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_PAINT: paint(dialog); return true;
        case WM_HSCROLL:
            showPreview(dialog, WindowContext(dialog).get());
            writeEdits(dialog);
            return true;
        case WM_LBUTTONDOWN: press(dialog, GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)); return true;
        case WM_SETCURSOR: setCursor(dialog); return true;
        case WM_COMMAND: command(dialog, LOWORD(wParam), HIWORD(wParam), lParam); return true;
        default: return false;
    }
}

}  // namespace

std::intptr_t dialogProcedure(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    return answerMessage<Settings, Record>({initialise, handle}, window, message, wParam, lParam);
}

}  // namespace CameraView
