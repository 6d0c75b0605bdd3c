// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_H
#define VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_H

#include "framework/dialog_launcher.h"

namespace HorizontalHold {

/// Takes the handle of the work record as its parameter; null where there are no windows.
inline constexpr DialogProcedure* dialogProcedure = nullptr;

}  // namespace HorizontalHold

#endif
