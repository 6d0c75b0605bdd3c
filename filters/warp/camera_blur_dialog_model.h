// SPDX-License-Identifier: MIT
// The rules of Camera Blur's settings dialog, without its window.
#ifndef VIREO_FILTERS_WARP_CAMERA_BLUR_DIALOG_MODEL_H
#define VIREO_FILTERS_WARP_CAMERA_BLUR_DIALOG_MODEL_H

#include "filters/warp/camera_blur.h"
#include "framework/dialog_geometry.h"

#include <string>

namespace CameraBlur {

class DialogModel {
public:
    static constexpr int largestAmount = 100;

    explicit DialogModel(const Settings& settings) : settings_(settings) {}

    const Settings& settings() const { return settings_; }
    const Box& preview() const { return preview_; }

    /// The preview stands above the slider, in the middle of the dialog.
    void layOut(const Box& client, const Box& slider) {
        preview_ = previewBetween(client.left, client.right, client.top, slider.top, 240, 180);
    }

    /// The text beside the slider.
    std::wstring readOut() const { return std::to_wstring(settings_.amount) + L"%"; }

    void slide(int position) { settings_.amount = static_cast<std::uint16_t>(position); }

private:
    Settings settings_;
    Box preview_;
};

}  // namespace CameraBlur

#endif
