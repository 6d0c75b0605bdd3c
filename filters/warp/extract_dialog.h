// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_EXTRACT_DIALOG_H
#define VIREO_FILTERS_WARP_EXTRACT_DIALOG_H

#include "framework/dialog_launcher.h"

namespace Extract {

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace Extract

#endif
