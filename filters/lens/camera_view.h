// SPDX-License-Identifier: MIT
// What Camera View's render shares with its dialog.
#ifndef VIREO_FILTERS_LENS_CAMERA_VIEW_H
#define VIREO_FILTERS_LENS_CAMERA_VIEW_H

#include "filters/lens/sampler.h"
#include "framework/dialog_launcher.h"

#include <cstdint>

namespace CameraView {

/// Focal length and distance count pixels of a frame as wide as the reference rectangle, so that settings
/// give the same picture at any size.
struct Settings {
    std::int16_t longitude;  ///< Degrees, like latitude and roll.
    std::int16_t latitude;
    std::int16_t roll;
    std::int16_t focalLength;
    std::int16_t distance;
    std::int16_t zoom;        ///< Percent.
    std::uint32_t fillColor;  ///< 0x00BBGGRR.
    FrameRect referenceRect;
    std::uint16_t fillAlphaChannel;  ///< 0 fills with transparent black instead of the colour.

    template <class Visit>
    void fields(Visit&& visit) {
        visit(longitude);
        visit(latitude);
        visit(roll);
        visit(focalLength);
        visit(distance);
        visit(zoom);
        visit(fillColor);
        visit(referenceRect);
        visit(fillAlphaChannel);
    }
};

inline constexpr FrameRect previewSize{0, 0, 160, 120};

inline constexpr Settings initialSettings{0, 0, 0, 500, 1, 100, 0x00FFFFFF, previewSize, 1};

/// How large the host sees the record that becomes the dialog's.
inline constexpr std::size_t workRecordBytes = 112;

/// Shows the source as the camera sees it. Frames are expected to be of one size; what the destination has
/// beyond the source stays as it was. Without memory for a copy of the source nothing is written.
void project(FrameBuffer* source, FrameBuffer* destination, const Settings& settings, const LensSteps& steps);

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace CameraView

#endif
