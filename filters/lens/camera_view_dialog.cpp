// SPDX-License-Identifier: MIT
// The window of Camera View's settings dialog: six rows of slider and edit box, the fill, and a live preview.
#include "filters/lens/camera_view_dialog.h"

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

DialogState& stateOf(HWND dialog) { return *static_cast<DialogState*>(*workRecordOf(dialog)); }

FilterInvocation& invocationOf(HWND dialog) { return **stateOf(dialog).invocation; }

Box boxOf(const FrameRect& rect) { return {rect.left, rect.top, rect.right, rect.bottom}; }

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

/// Edit boxes report what the dialog itself writes as if it were typed; such reports are not acted on.
class OwnWriting {
public:
    explicit OwnWriting(DialogState& state) : state_(state), before_(state.writing) { state.writing = 1; }
    OwnWriting(const OwnWriting&) = delete;
    OwnWriting& operator=(const OwnWriting&) = delete;
    ~OwnWriting() { state_.writing = before_; }

private:
    DialogState& state_;
    std::uint16_t before_;
};

void writeEdit(HWND dialog, Row row, int value) {
    const OwnWriting writing(stateOf(dialog));
    stateOf(dialog).shown[row].written = static_cast<std::uint16_t>(value);
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
        if (isLength && stateOf(dialog).shown[row].written == position) continue;
        writeEdit(dialog, Row(row), position);
    }
}

void drawSwatch(HWND dialog, HDC context) {
    const Box swatch = boxOf(stateOf(dialog).swatchRect);
    outline(context, swatch);
    const GdiObject<HBRUSH> color(CreateSolidBrush(stateOf(dialog).fillColor & 0x00FFFFFF));
    fill(context, swatch.grownBy(-1), color.get());
}

void showPreview(HWND dialog, HDC context) {
    DialogState& state = stateOf(dialog);
    if (!takePositions(state, positionsOf(dialog))) return;
    const FilterInvocation& invocation = invocationOf(dialog);
    render(invocation.sourceFrame, invocation.destFrame, settingsOf(state), LensSteps{1, 1});
    drawPreview(context, invocation.sourceFrame, boxOf(state.sampleRect));
    drawPreview(context, invocation.destFrame, boxOf(state.previewRect));
}

void initialise(HWND dialog, MemoryHandle record) {
    attachWorkRecord(dialog, record);
    DialogState& state = stateOf(dialog);
    const OwnWriting writing(state);
    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    for (std::size_t row = 0; row < rows.size(); ++row) {
        // Ranges reach beyond what two 16-bit halves of one message hold signed, so each end is set by
        // itself.
        SendDlgItemMessageW(dialog, rows[row].sliderId, TBM_SETRANGEMIN, FALSE, rows[row].smallest);
        SendDlgItemMessageW(dialog, rows[row].sliderId, TBM_SETRANGEMAX, FALSE, rows[row].largest);
        moveSlider(dialog, Row(row), state.values[row]);
    }
    if (state.fillAlphaChannel != 0) CheckDlgButton(dialog, fillAlphaId, BST_CHECKED);
    layOut(state, controlBox(dialog, sampleId), controlBox(dialog, swatchId), controlBox(dialog, groupId));
    centerOverHost(dialog, invocationOf(dialog));
}

void paint(HWND dialog) {
    const PaintContext context(dialog);
    forgetShown(stateOf(dialog));
    drawSwatch(dialog, context.get());
    showPreview(dialog, context.get());
    writeEdits(dialog);
}

Edit typedInto(HWND dialog, Row row) {
    if (isAngle(row)) return editAngle(static_cast<int>(GetDlgItemInt(dialog, editId(row), nullptr, FALSE)));
    if (row != Zoom) return editLength(stateOf(dialog), row, numberIn(dialog, editId(row)));
    wchar_t text[64];
    GetDlgItemTextW(dialog, editId(row), text, static_cast<int>(std::size(text)));
    double typed = 0;
    // A number that is only half typed is left alone.
    if (!QRB::Locale::GetValueFromDisplayString(reinterpret_cast<const char16_t*>(text), &typed)) return {};
    return editZoom(positionOf(dialog, Zoom), typed);
}

void editChanged(HWND dialog, Row row, LPARAM lParam) {
    if (stateOf(dialog).writing != 0) return;
    const Edit edit = typedInto(dialog, row);
    if (edit.beep) MessageBeep(0);
    if (edit.writeBack) writeEdit(dialog, row, *edit.writeBack);
    if (edit.slider) {
        moveSlider(dialog, row, *edit.slider);
        stateOf(dialog).shown[row].written = static_cast<std::uint16_t>(*edit.slider);
        showPreview(dialog, WindowContext(dialog).get());
    } else if (row == FocalLength || row == Distance) {
        // The last value goes to the slider's window text, not to the edit box: what was refused stays
        // visible.
        SetDlgItemTextW(
            dialog, rows[row].sliderId,
            std::to_wstring(static_cast<std::int16_t>(stateOf(dialog).shown[row].written)).c_str());
    }
    if (LOWORD(lParam) == 0xFFFF) SendDlgItemMessageW(dialog, editId(row), EM_SETSEL, 0, 32767);
}

/// No handler answers it: the preview waits for the next change or paint.
void sendChangeCommand(HWND dialog) { SendMessageW(dialog, WM_COMMAND, rows[Longitude].sliderId, 0); }

void resetAll(HWND dialog) {
    DialogState& state = stateOf(dialog);
    reset(state);
    for (std::size_t row = 0; row < rows.size(); ++row) moveSlider(dialog, Row(row), state.values[row]);
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
    DialogState& state = stateOf(dialog);
    FrameBuffer* source = invocationOf(dialog).sourceFrame;
    FrameRect bounds;
    vpixGetBounds(source, &bounds);
    const WindowContext context(dialog);
    do {
        POINT pointer;
        GetCursorPos(&pointer);
        ScreenToClient(dialog, &pointer);
        if (const auto point = sampledPoint(state, pointer.x, pointer.y, bounds)) {
            state.fillColor = colorOfPixel(vpixGetPixel(source, point->x, point->y));
            drawSwatch(dialog, context.get());
        }
        Sleep(pause);
    } while (buttonIsDown());
    state.redraw = 1;
}

void pickColor(HWND dialog) {
    DialogState& state = stateOf(dialog);
    const std::uint32_t picked = vrColorPicker(dialog, state.fillColor);
    if (picked == state.fillColor) return;
    state.fillColor = picked;
    state.redraw = 1;
    drawSwatch(dialog, WindowContext(dialog).get());
}

void press(HWND dialog, int x, int y) {
    const DialogState& state = stateOf(dialog);
    if (boxOf(state.swatchRect).contains(x, y)) {
        pickColor(dialog);
    } else if (boxOf(state.sampleRect).contains(x, y)) {
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
    const bool overSample = boxOf(stateOf(dialog).sampleRect).contains(pointer.x, pointer.y);
    SetCursor(overSample ? LoadCursorW(static_cast<HINSTANCE>(moduleObject()->GetNativeModule()),
                                       MAKEINTRESOURCEW(eyedropperCursor))
                         : LoadCursorW(nullptr, IDC_ARROW));
    SetWindowLongPtrW(dialog, DWLP_MSGRESULT, TRUE);
}

void accept(HWND dialog) {
    DialogState& state = stateOf(dialog);
    takePositions(state, positionsOf(dialog));
    acceptSettings(dialog, IDOK, invocationOf(dialog), settingsSize, settingsOf(state));
}

void command(HWND dialog, int id, int notification, LPARAM lParam) {
    switch (id) {
        case IDOK: return accept(dialog);
        case IDCANCEL: cancelDialog(dialog); return;
        case resetId: return resetAll(dialog);
        case fillAlphaId:
            stateOf(dialog).fillAlphaChannel = IsDlgButtonChecked(dialog, fillAlphaId) == BST_CHECKED ? 1 : 0;
            return;
        default: break;
    }
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (id == editId(Row(row)) && notification == EN_CHANGE) editChanged(dialog, Row(row), lParam);
    }
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
        case WM_PAINT: paint(dialog); return TRUE;
        case WM_HSCROLL:
            showPreview(dialog, WindowContext(dialog).get());
            writeEdits(dialog);
            return TRUE;
        case WM_LBUTTONDOWN: press(dialog, GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)); return TRUE;
        case WM_SETCURSOR: setCursor(dialog); return TRUE;
        case WM_COMMAND: command(dialog, LOWORD(wParam), HIWORD(wParam), lParam); return TRUE;
        case WM_CLOSE: endDialog(dialog, invocationOf(dialog), lParam); return TRUE;
        default: return FALSE;
    }
}

}  // namespace CameraView
