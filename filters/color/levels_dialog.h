// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_COLOR_LEVELS_DIALOG_H
#define VIREO_FILTERS_COLOR_LEVELS_DIALOG_H

#include "framework/dialog_launcher.h"

namespace Levels {

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace Levels

#endif
