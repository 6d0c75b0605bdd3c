// SPDX-License-Identifier: MIT
// What Camera Blur's render shares with its dialog.
#ifndef VIREO_FILTERS_WARP_CAMERA_BLUR_H
#define VIREO_FILTERS_WARP_CAMERA_BLUR_H

#include "framework/dialog_launcher.h"
#include "host/pixkit/pixkit.h"

#include <cstddef>
#include <cstdint>

namespace CameraBlur {

struct Settings {
    std::uint16_t amount;  ///< Percent; at 100 the blur reaches a tenth of the frame in each direction.
};

/// How large the host sees the record that becomes the dialog's.
inline constexpr std::size_t workRecordBytes = 32;

void blur(FrameBuffer* source, FrameBuffer* destination, const Settings& settings);

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace CameraBlur

#endif
