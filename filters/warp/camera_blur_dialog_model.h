// SPDX-License-Identifier: MIT
// The rules of Camera Blur's settings dialog, without its window.
#ifndef VIREO_FILTERS_WARP_CAMERA_BLUR_DIALOG_MODEL_H
#define VIREO_FILTERS_WARP_CAMERA_BLUR_DIALOG_MODEL_H

#include "framework/dialog_geometry.h"

#include <string>

namespace CameraBlur {

inline constexpr int largestAmount = 100;

/// The text beside the slider.
inline std::wstring readOut(int amount) { return std::to_wstring(amount) + L"%"; }

/// Above the slider, in the middle of the dialog.
constexpr Box previewBox(const Box& client, const Box& slider) {
    return previewBetween(client.left, client.right, client.top, slider.top, 240, 180);
}

}  // namespace CameraBlur

#endif
