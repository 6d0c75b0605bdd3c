// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_H
#define VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_H

#include "framework/dialog_launcher.h"

namespace HorizontalHold {

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace HorizontalHold

#endif
