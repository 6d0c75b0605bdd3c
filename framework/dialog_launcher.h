// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_DIALOG_LAUNCHER_H
#define VIREO_FRAMEWORK_DIALOG_LAUNCHER_H

#include "framework/settings.h"

#include <cstdint>

/// A Win32 dialog procedure in plain types, so that filters need no window headers.
using DialogProcedure = std::intptr_t(void* window, unsigned message, std::uintptr_t wParam,
                                      std::intptr_t lParam);

/// Declares a dialog's procedure; null where there are no windows.
#if defined(_WIN32)
#define VIREO_DIALOG_PROCEDURE(name) DialogProcedure name
#else
#define VIREO_DIALOG_PROCEDURE(name) inline constexpr DialogProcedure* name = nullptr
#endif

/// What RunLocalisedDialog answers where no template could be loaded, and wherever there are no windows.
inline constexpr std::int64_t noDialog = -1;

/// What Setup leaves in the work record for the dialog, which makes its own record of it.
template <class Settings>
struct DialogStart {
    FilterInvocation** invocation;
    Settings settings;
};

/// Runs a dialog modally from the template in the host's language, else from the base template, and returns
/// what its procedure ended it with. The procedure gets `param` with WM_INITDIALOG.
std::int64_t RunLocalisedDialog(std::uint16_t baseId, void* owner, DialogProcedure* dialogProc, void* param);

/// Setup of the filters with a dialog: runs it over the host's foremost window with the work record's handle
/// as its parameter. The dialog releases the record when it closes; where none ran it is released here.
std::int64_t runSettingsDialog(const FilterInvocation& invocation, std::uint16_t baseId,
                               DialogProcedure* dialogProc, WorkRecord& workRecord);

#endif
