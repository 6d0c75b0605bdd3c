// SPDX-License-Identifier: MIT
#include "framework/dialog_launcher.h"

#if defined(_WIN32)

#include "framework/module_resources.h"
#include "host/qrb/language.h"
#include "host/win32.h"

#include <commctrl.h>

namespace {

struct LanguageVariant {
    std::uint16_t language;
    std::uint16_t offset;  ///< Of the template's id from the base.
};

constexpr LanguageVariant variants[] = {
    {QRB::makeLanguageID(QRB::kSubLanguage_French, QRB::kLanguage_French), 1},
    {QRB::makeLanguageID(QRB::kSubLanguage_German, QRB::kLanguage_German), 2},
    {QRB::makeLanguageID(QRB::kSubLanguage_Default, QRB::kLanguage_Japanese), 3},
    {QRB::makeLanguageID(QRB::kSubLanguage_Spanish, QRB::kLanguage_Spanish), 4},
    {QRB::makeLanguageID(QRB::kSubLanguage_Italian, QRB::kLanguage_Italian), 5},
    {QRB::makeLanguageID(QRB::kSubLanguage_Korean, QRB::kLanguage_Korean), 6},
};

std::uint16_t variantOf(std::uint16_t baseId) {
    const std::uint16_t language = QRB::GetLanguageID();
    for (const LanguageVariant& variant : variants) {
        if (variant.language == language) return static_cast<std::uint16_t>(baseId + variant.offset);
    }
    return baseId;
}

void* foremostWindow(const FilterInvocation& invocation) {
    return GetLastActivePopup(static_cast<HWND>(invocation.hostCallbacks->window->getMainWindow.get()()));
}

}  // namespace

std::int64_t RunLocalisedDialog(std::uint16_t baseId, void* owner, DialogProcedure* dialogProc, void* param) {
    const void* dialog = LoadDialogTemplate(variantOf(baseId));
    if (dialog == nullptr) dialog = LoadDialogTemplate(baseId);
    if (dialog == nullptr) return noDialog;

    const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_BAR_CLASSES | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&controls);
    const auto module = moduleObject();
    const std::int64_t result = DialogBoxIndirectParamW(
        static_cast<HINSTANCE>(module->GetNativeModule()), static_cast<const DLGTEMPLATE*>(dialog),
        static_cast<HWND>(owner), reinterpret_cast<DLGPROC>(dialogProc), reinterpret_cast<LPARAM>(param));
    ReleaseModuleResource(dialog);
    return result;
}

#else

namespace {

void* foremostWindow(const FilterInvocation&) { return nullptr; }

}  // namespace

std::int64_t RunLocalisedDialog(std::uint16_t, void*, DialogProcedure*, void*) { return noDialog; }

#endif

std::int64_t runSettingsDialog(const FilterInvocation& invocation, std::uint16_t baseId,
                               DialogProcedure* dialogProc, WorkRecord& workRecord) {
    const std::int64_t result =
        RunLocalisedDialog(baseId, foremostWindow(invocation), dialogProc, workRecord.get());
    if (result != noDialog) workRecord.release();
    return result;
}
