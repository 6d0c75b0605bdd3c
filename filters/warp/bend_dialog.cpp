// SPDX-License-Identifier: MIT
// The window of Bend's settings dialog: two halves of lists and sliders around a preview that plays the
// animation.
#include "filters/warp/bend_dialog_model.h"
#include "framework/dialog_window.h"
#include "framework/module_resources.h"

#include <commctrl.h>

namespace Bend {
namespace {

// The controls of the horizontal half; the vertical half's stand a stride further.
constexpr int directionId = 10;
constexpr int waveId = 11;
constexpr int intensityId = 12;
constexpr int rateId = 13;
constexpr int widthId = 14;
constexpr int halfStride = 5;
constexpr int placeholderId = 21;

constexpr UINT_PTR timerId = 1;
constexpr UINT timerPeriod = 200;  // Milliseconds.

struct ComboList {
    int comboId;
    std::uint16_t resourceId;
};

constexpr ComboList lists[] = {{10, 2000}, {11, 2001}, {15, 2002}, {16, 2003}};

constexpr char titleKey[] = "$$$/Strata/VireoFilters/Bend/DialogTitle=Bend Settings";
constexpr char directionKey[] = "$$$/Strata/VireoFilters/Bend/DirectionDialogLabel=Direction:";
constexpr char waveKey[] = "$$$/Strata/VireoFilters/Bend/WaveDialogLabel=Wave:";
constexpr char intensityKey[] = "$$$/Strata/VireoFilters/Bend/IntensityDialogLabel=Intensity";
constexpr char rateKey[] = "$$$/Strata/VireoFilters/Bend/RateDialogLabel=Rate";
constexpr char widthKey[] = "$$$/Strata/VireoFilters/Bend/WidthDialogLabel=Width";
constexpr char plusKey[] = "$$$/Strata/VireoFilters/Bend/PlusDialogLabel=+";
constexpr char minusKey[] = "$$$/Strata/VireoFilters/Bend/MinusDialogLabel=-";

constexpr LocalisedControl texts[] = {
    {IDOK, "$$$/Strata/VireoFilters/Bend/OKDialogLabel=OK"},
    {IDCANCEL, "$$$/Strata/VireoFilters/Bend/CancelDialogLabel=Cancel"},
    {1210, directionKey},
    {1211, waveKey},
    {1212, intensityKey},
    {1213, plusKey},
    {1214, minusKey},
    {1215, rateKey},
    {1216, plusKey},
    {1217, minusKey},
    {1218, widthKey},
    {1219, plusKey},
    {1220, minusKey},
    {1221, directionKey},
    {1222, waveKey},
    {1223, intensityKey},
    {1224, plusKey},
    {1225, minusKey},
    {1226, rateKey},
    {1227, plusKey},
    {1228, minusKey},
    {1229, widthKey},
    {1230, plusKey},
    {1231, minusKey},
    {1232, "$$$/Strata/VireoFilters/Bend/HorizontalDialogLabel=Horizontal"},
    {1233, "$$$/Strata/VireoFilters/Bend/VerticalDialogLabel=Vertical"},
};

/// Asks for previews from its start on until it goes.
class PreviewTimer {
public:
    PreviewTimer() = default;
    PreviewTimer(const PreviewTimer&) = delete;
    PreviewTimer& operator=(const PreviewTimer&) = delete;
    ~PreviewTimer() {
        if (dialog_ != nullptr) KillTimer(dialog_, timerId);
    }

    void start(HWND dialog) {
        dialog_ = dialog;
        SetTimer(dialog, timerId, timerPeriod, nullptr);
    }

private:
    HWND dialog_ = nullptr;
};

struct Record : DialogRecord<DialogModel> {
    using DialogRecord::DialogRecord;

    WorkBuffer work;
    PreviewTimer timer;
};
static_assert(sizeof(Record) <= workRecordBytes);

DialogModel& modelOf(HWND dialog) { return recordOf<Record>(dialog).model; }

LRESULT send(HWND dialog, int id, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
    return SendDlgItemMessageW(dialog, id, message, wParam, lParam);
}

void setSlider(HWND dialog, int id, const SliderRange& range, int position) {
    send(dialog, id, TBM_SETRANGE, FALSE, MAKELPARAM(range.smallest, range.largest));
    send(dialog, id, TBM_SETPOS, TRUE, position);
}

void sizeDropDown(HWND combo, int items) {
    RECT rect;
    GetWindowRect(combo, &rect);
    const auto itemHeight = static_cast<int>(SendMessageW(combo, CB_GETITEMHEIGHT, 0, 0));
    const auto fieldHeight =
        static_cast<int>(SendMessageW(combo, CB_GETITEMHEIGHT, static_cast<WPARAM>(-1), 0));
    SetWindowPos(combo, nullptr, 0, 0, rect.right - rect.left, dropDownHeight(items, itemHeight, fieldHeight),
                 SWP_NOMOVE | SWP_NOZORDER);
}

void fillCombo(HWND dialog, const ComboList& list) {
    const HWND combo = GetDlgItem(dialog, list.comboId);
    SendMessageW(combo, CB_RESETCONTENT, 0, 0);
    std::size_t size = 0;
    const void* bytes = LoadModuleResource(u"TEXT", list.resourceId, &size);
    if (bytes == nullptr || size == 0) return;
    const auto keys = listKeys({static_cast<const char*>(bytes), size});
    ReleaseModuleResource(bytes);
    for (const std::string& key : keys) {
        const std::u16string item = listItem(mtkcore::config::Localizer::Get().Translate(key));
        SendMessageW(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item.c_str()));
    }
    sizeDropDown(combo, static_cast<int>(keys.size()));
    SendMessageW(combo, CB_SETCURSEL, 0, 0);
}

void showHalf(HWND dialog, int stride, const AxisSettings& half) {
    send(dialog, directionId + stride, CB_SETCURSEL, half.direction);
    send(dialog, waveId + stride, CB_SETCURSEL, half.wave);
    setSlider(dialog, intensityId + stride, DialogModel::intensityRange, half.intensity);
    setSlider(dialog, rateId + stride, DialogModel::rateRange, half.rate);
    setSlider(dialog, widthId + stride, DialogModel::widthRange, half.width);
}

AxisSettings shownHalf(HWND dialog, int stride) {
    const auto slider = [&](int id) {
        return static_cast<std::int16_t>(send(dialog, id + stride, TBM_GETPOS));
    };
    // An empty list has the choice -1, which renders as no direction and no wave.
    const auto choice = [&](int id) {
        return static_cast<std::uint16_t>(send(dialog, id + stride, CB_GETCURSEL));
    };
    return {choice(directionId), choice(waveId), slider(intensityId), slider(rateId), slider(widthId)};
}

const Settings& shownSettings(HWND dialog) {
    modelOf(dialog).choose(shownHalf(dialog, 0), shownHalf(dialog, halfStride));
    return modelOf(dialog).settings();
}

void showPreview(HWND dialog, HDC context) {
    const FilterInvocation& invocation = invocationOf(dialog);
    bend(invocation.sourceFrame, invocation.destFrame, recordOf<Record>(dialog).work.get(),
         modelOf(dialog).nextStep(), shownSettings(dialog));
    drawPreview(context, invocation.destFrame, DialogModel::preview(controlBox(dialog, placeholderId)));
}

void initialise(HWND dialog) {
    Record& record = recordOf<Record>(dialog);
    record.work = newWorkBuffer(invocationOf(dialog));
    for (const ComboList& list : lists) fillCombo(dialog, list);
    setLocalisedTitle(dialog, titleKey);
    setLocalisedTexts(dialog, texts);
    record.timer.start(dialog);
    showHalf(dialog, 0, record.model.settings().horizontal);
    showHalf(dialog, halfStride, record.model.settings().vertical);
    centerOverHost(dialog);
}

/// Keeps the dialog responsive while previews take their time: everything that waits is handled first.
void drainMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        if (message.message == WM_TIMER) continue;
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

bool buttonIsDown(int button) { return (GetAsyncKeyState(button) & 0x8000) != 0; }

void tick(HWND dialog) {
    drainMessages();
    if (buttonIsDown(VK_LBUTTON) || buttonIsDown(VK_RBUTTON)) return;
    if (GetActiveWindow() != dialog || workRecordOf(dialog) == nullptr) return;
    showPreview(dialog, WindowContext(dialog).get());
}

void accept(HWND dialog) { acceptSettings(dialog, IDOK, shownSettings(dialog)); }

bool handle(HWND dialog, UINT message, WPARAM wParam, LPARAM) {
    switch (message) {
        case WM_PAINT: showPreview(dialog, PaintContext(dialog).get()); return true;
        case WM_TIMER: tick(dialog); return true;
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

}  // namespace Bend
