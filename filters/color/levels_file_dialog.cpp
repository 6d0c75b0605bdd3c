// SPDX-License-Identifier: MIT
// Asks for the name of a Levels parameter file with the system's file dialog.
#include "filters/color/levels_file.h"
#include "framework/dialog_window.h"
#include "framework/module_resources.h"
#include "host/utilkit/utilkit.h"

#include <commdlg.h>
#include <dlgs.h>

#include <algorithm>
#include <array>

namespace Levels {
namespace {

constexpr char filterListKey[] =
    "$$$/Strata/VireoFilters/Levels/LevelsFilters=All Files (*.*)|*.*|LVL (*.lvl)|*.lvl|";
constexpr char extensionKey[] = "$$$/Strata/VireoFilters/Levels/LevelsExtension=lvl";

struct Mode {
    const char* titleKey;
    const char* errorKey;
    DWORD flags;
};

constexpr DWORD commonFlags =
    OFN_HIDEREADONLY | OFN_ENABLEHOOK | OFN_PATHMUSTEXIST | OFN_EXPLORER | OFN_ENABLESIZING;

constexpr Mode loading{"$$$/Strata/VireoFilters/Levels/LoadLevelsParameters=Load Levels Parameters",
                       "$$$/Strata/VireoFilters/Levels/LoadError=Error during parameter file load.",
                       commonFlags | OFN_FILEMUSTEXIST};
constexpr Mode saving{"$$$/Strata/VireoFilters/Levels/SaveLevelsParameters=Save Levels Parameters",
                      "$$$/Strata/VireoFilters/Levels/SaveError=Error during parameter file save.",
                      commonFlags | OFN_OVERWRITEPROMPT};

static_assert(loading.flags == 0x881824);
static_assert(saving.flags == 0x880826);

/// What the open file dialog is centred over. Only one is ever open.
HWND centeringWindow = nullptr;

UINT_PTR CALLBACK fileDialogHook(HWND hook, UINT message, WPARAM, LPARAM lParam) {
    if (message == WM_INITDIALOG) {
        centeringWindow = reinterpret_cast<HWND>(reinterpret_cast<const OPENFILENAMEW*>(lParam)->lCustData);
    }
    if (message == WM_NOTIFY && reinterpret_cast<const NMHDR*>(lParam)->code == CDN_INITDONE) {
        center_wnd_higher(GetParent(hook), centeringWindow);
    }
    return 0;
}

/// The module's path, cut at a backslash that is looked for as if the bytes were 16-bit characters. It
/// therefore names no folder, and the dialog opens where the system likes: so users know it.
class InitialDirectory {
public:
    InitialDirectory() {
        const DWORD length = GetModuleFileNameA(static_cast<HMODULE>(moduleObject()->GetNativeModule()),
                                                reinterpret_cast<char*>(characters_.data()), bytes);
        if (length == 0) return;
        found_ = true;
        for (std::size_t i = std::min<std::size_t>(length, characters_.size() - 1) - 1; i > 0; --i) {
            if (characters_[i] != L'\\') continue;
            characters_[i] = 0;
            break;
        }
    }

    const wchar_t* get() const { return found_ ? characters_.data() : nullptr; }

private:
    static constexpr DWORD bytes = 520;
    std::array<wchar_t, bytes / sizeof(wchar_t) + 1> characters_{};
    bool found_ = false;
};

}  // namespace

int LoadSaveLevelsFile(void* owner, bool load, Settings* settings, void* centerOver) {
    const Mode& mode = load ? loading : saving;
    std::wstring filters = localised(filterListKey);
    std::ranges::replace(filters, L'|', L'\0');
    const std::wstring title = localised(mode.titleKey);
    const std::wstring extension = localised(extensionKey);
    const InitialDirectory directory;
    std::array<wchar_t, 520> path{};

    OPENFILENAMEW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = static_cast<HWND>(owner);
    dialog.hInstance = static_cast<HINSTANCE>(moduleObject()->GetNativeModule());
    dialog.lpstrFilter = filters.c_str();
    dialog.nFilterIndex = 2;
    dialog.lpstrFile = path.data();
    dialog.nMaxFile = static_cast<DWORD>(path.size());
    dialog.lpstrInitialDir = directory.get();
    dialog.lpstrTitle = title.c_str();
    dialog.Flags = mode.flags;
    dialog.lpstrDefExt = extension.c_str();
    dialog.lCustData = reinterpret_cast<LPARAM>(centerOver);
    dialog.lpfnHook = fileDialogHook;
    if (!(load ? GetOpenFileNameW(&dialog) : GetSaveFileNameW(&dialog))) return 0;

    const std::wstring chosen = path.data();
    const std::u16string file(chosen.begin(), chosen.end());
    if (load ? loadFile(file, *settings) : saveFile(file, *settings)) return 1;
    MessageBoxW(static_cast<HWND>(owner), localised(mode.errorKey).c_str(), title.c_str(),
                MB_ICONEXCLAMATION);
    return 0;
}

}  // namespace Levels
