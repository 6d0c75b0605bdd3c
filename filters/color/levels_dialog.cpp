// SPDX-License-Identifier: MIT
// The window of Levels' settings dialog: histogram, two strips of markers, fields, files and a live preview.
#include "filters/color/levels_dialog_model.h"
#include "filters/color/levels_file.h"
#include "framework/dialog_numbers.h"
#include "framework/dialog_window.h"
#include "host/qrb/locale.h"

#include <windowsx.h>

namespace Levels {
namespace {

constexpr int loadId = 1074;
constexpr int saveId = 1075;
constexpr int histogramId = 1080;
constexpr int lineId = 1087;
constexpr int comboId = 1110;
constexpr int gradientId = 1115;
constexpr int groupId = 1117;
constexpr int acceptId = 1034;

constexpr char titleKey[] = "$$$/Strata/VireoFilters/Levels/Title=Levels Settings";
constexpr const char* channelKeys[] = {
    "$$$/Strata/VireoFilters/Levels/LevelsRGB=RGB Channels",
    "$$$/Strata/VireoFilters/Levels/LevelsRed=Red Channel",
    "$$$/Strata/VireoFilters/Levels/LevelsGreen=Green Channels",
    "$$$/Strata/VireoFilters/Levels/LevelsBlue=Blue Channels",
};
constexpr LocalisedControl texts[] = {
    {1118, "$$$/Strata/VireoFilters/Levels/InputLevels=&Input Levels:"},
    {1119, "$$$/Strata/VireoFilters/Levels/OutputLevels=&Output Levels:"},
    {loadId, "$$$/Strata/VireoFilters/Levels/Load=&Load..."},
    {saveId, "$$$/Strata/VireoFilters/Levels/Save=&Save..."},
    {acceptId, "$$$/Strata/VireoFilters/Levels/OK=OK"},
    {IDCANCEL, "$$$/Strata/VireoFilters/Levels/Cancel=Cancel"},
};

struct FieldControl {
    Value value;
    int id;
    std::uint16_t icon;  ///< Of the value's marker.
};

constexpr FieldControl fields[] = {{InputBlack, 1111, 1000},
                                   {InputWhite, 1113, 1002},
                                   {OutputBlack, 1114, 1000},
                                   {OutputWhite, 1116, 1002},
                                   {Gamma, 1112, 1001}};

using Record = DialogRecord<DialogModel>;
static_assert(sizeof(Record) <= workRecordBytes);

DialogModel& modelOf(HWND dialog) { return recordOf<Record>(dialog).model; }

void* hostWindow(HWND dialog) { return invocationOf(dialog).hostCallbacks->window->getMainWindow.get()(); }

void drawHistogram(HWND dialog, HDC context) {
    drawBars(context, controlBox(dialog, histogramId),
             [&](const Box& box, int i) { return modelOf(dialog).histogramBar(box, i); });
}

void drawGradient(HWND dialog, HDC context) {
    const Box box = controlBox(dialog, gradientId).grownBy(-1);
    const OffscreenDrawing drawing(context, box);
    for (int i = 0; i < 256; ++i) {
        const GdiObject<HBRUSH> grey(CreateSolidBrush(RGB(i, i, i)));
        // Reaches as far as the next stripe, so that bars wider than 256 pixels have no gaps.
        const int right =
            i == 255 ? box.width() : std::max(barX(box.width(), i + 1), barX(box.width(), i) + 1);
        fill(drawing.get(), {barX(box.width(), i), 0, right, box.height()}, grey.get());
    }
}

void drawStrip(HWND dialog, HDC context, unsigned shown) {
    const DialogModel& model = modelOf(dialog);
    DrawnMarker markers[std::size(fields)];
    std::size_t count = 0;
    for (const FieldControl& field : fields) {
        if ((shown & field.value) != 0)
            markers[count++] = {loadMarker(field.icon), model.markerValue(field.value)};
    }
    drawMarkers(context, model.strip(shown == inputValues ? InputBlack : OutputBlack), {markers, count});
}

constexpr unsigned outputValues = OutputBlack | OutputWhite;

void writeField(HWND dialog, const FieldControl& field) {
    const int value = modelOf(dialog).shown(field.value);
    if (field.value != Gamma) {
        SetDlgItemInt(dialog, field.id, static_cast<UINT>(value), TRUE);
        return;
    }
    const std::u16string text = FormatDialogNumber(value * 0.01, true, 2);
    SetDlgItemTextW(dialog, field.id, reinterpret_cast<const wchar_t*>(text.c_str()));
}

void showPreview(HWND dialog, HDC context) {
    const FilterInvocation& invocation = invocationOf(dialog);
    render(invocation, modelOf(dialog).settings());
    drawPreview(context, invocation.destFrame, modelOf(dialog).preview());
}

void showValues(HWND dialog, HDC context, unsigned changed) {
    for (const unsigned strip : {inputValues, outputValues}) {
        if ((changed & strip) != 0) drawStrip(dialog, context, strip);
    }
    for (const FieldControl& field : fields) {
        if ((changed & field.value) != 0) writeField(dialog, field);
    }
}

void update(HWND dialog, unsigned changed) {
    if (changed == 0) return;
    const WindowContext context(dialog);
    showValues(dialog, context.get(), changed);
    showPreview(dialog, context.get());
}

std::optional<int> typedValue(HWND dialog, const FieldControl& field) {
    if (field.value != Gamma) return numberIn(dialog, field.id);
    wchar_t text[64];
    GetDlgItemTextW(dialog, field.id, text, static_cast<int>(std::size(text)));
    double gamma = 0;
    if (!QRB::Locale::GetValueFromDisplayString(reinterpret_cast<const char16_t*>(text), &gamma)) {
        return std::nullopt;
    }
    constexpr double beyond = 1000;
    return static_cast<int>(std::clamp(gamma, -beyond, beyond) * 100);
}

void commit(HWND dialog, const FieldControl& field) {
    const Commit result = modelOf(dialog).commit(field.value, typedValue(dialog, field));
    if (result.refused) {
        MessageBeep(0);
        writeField(dialog, field);
    }
    update(dialog, result.changed);
}

void chooseChannel(HWND dialog) {
    const auto chosen = static_cast<int>(SendDlgItemMessageW(dialog, comboId, CB_GETCURSEL, 0, 0));
    if (!modelOf(dialog).chooseChannel(chosen)) return;
    const WindowContext context(dialog);
    drawHistogram(dialog, context.get());
    showValues(dialog, context.get(), AllValues);
}

void load(HWND dialog) {
    Settings loaded;
    if (LoadSaveLevelsFile(dialog, true, &loaded, hostWindow(dialog)) != 1) return;
    modelOf(dialog).load(loaded);
    update(dialog, AllValues);
}

void save(HWND dialog) {
    Settings settings = modelOf(dialog).settings();
    LoadSaveLevelsFile(dialog, false, &settings, hostWindow(dialog));
}

void initialise(HWND dialog) {
    DialogModel& model = modelOf(dialog);

    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    for (const char* key : channelKeys) {
        SendDlgItemMessageW(dialog, comboId, CB_ADDSTRING, 0,
                            reinterpret_cast<LPARAM>(localised(key).c_str()));
    }
    SendDlgItemMessageW(dialog, comboId, CB_SETCURSEL, 0, 0);

    const Box histogram = controlBox(dialog, histogramId);
    const Box line = controlBox(dialog, lineId);
    SetWindowPos(GetDlgItem(dialog, lineId), nullptr, histogram.left, line.top, histogram.width(), 1,
                 SWP_NOZORDER);
    model.layOut(histogram, line, controlBox(dialog, gradientId), controlBox(dialog, comboId),
                 controlBox(dialog, groupId), clientBox(dialog));
    model.countPixels(frameThroughPixKit(invocationOf(dialog).sourceFrame));
    for (const FieldControl& field : fields) writeField(dialog, field);
    centerOverHost(dialog);
}

void paint(HWND dialog) {
    const PaintContext context(dialog);
    if (context.touches(controlBox(dialog, histogramId))) drawHistogram(dialog, context.get());
    if (context.touches(controlBox(dialog, gradientId))) drawGradient(dialog, context.get());
    for (const unsigned strip : {inputValues, outputValues}) {
        const Value any = strip == inputValues ? InputBlack : OutputBlack;
        if (context.touches(modelOf(dialog).strip(any).area())) drawStrip(dialog, context.get(), strip);
    }
    showPreview(dialog, context.get());
}

void accept(HWND dialog) { acceptSettings(dialog, acceptId, modelOf(dialog).settings()); }

void command(HWND dialog, int id, int notification) {
    switch (id) {
        case acceptId: return accept(dialog);
        case IDCANCEL: cancelDialog(dialog); return;
        case loadId: return load(dialog);
        case saveId: return save(dialog);
        case comboId:
            if (notification == CBN_SELCHANGE) chooseChannel(dialog);
            return;
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
        case WM_COMMAND: command(dialog, LOWORD(wParam), HIWORD(wParam)); return true;
        default: return false;
    }
}

}  // namespace

std::intptr_t dialogProcedure(void* window, unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
    return answerMessage<Settings, Record>({initialise, handle}, window, message, wParam, lParam);
}

}  // namespace Levels
