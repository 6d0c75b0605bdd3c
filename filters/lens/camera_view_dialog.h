// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_CAMERA_VIEW_DIALOG_H
#define VIREO_FILTERS_LENS_CAMERA_VIEW_DIALOG_H

#include "framework/dialog_launcher.h"

namespace CameraView {

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace CameraView

#endif
