// SPDX-License-Identifier: MIT
// What Camera View's dialog shares with its render.
#ifndef VIREO_FILTERS_LENS_CAMERA_VIEW_H
#define VIREO_FILTERS_LENS_CAMERA_VIEW_H

#include "filters/lens/sampler.h"
#include "host/vrm/filter_invocation.h"

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

inline constexpr std::size_t settingsSize = 36;

/// The work record that the entry hands to the dialog.
struct DialogState {
    static constexpr std::uint16_t nothingShown = 0x8001;

    struct Shown {
        std::uint16_t rendered;  ///< The value that the preview shows.
        std::uint16_t written;   ///< The value that the edit box shows.
    };

    Shown shown[6];
    std::int16_t values[6];  ///< Longitude, latitude, roll, focal length, distance, zoom.
    std::uint16_t redraw;    ///< Not 0 renders the preview also where no value changed.
    std::uint16_t fillAlphaChannel;
    FrameRect sampleRect;
    FrameRect swatchRect;
    FrameRect previewRect;
    std::uint32_t fillColor;
    FilterInvocation** invocation;
    std::uint16_t writing;  ///< Not 0 while the dialog writes its own edit boxes.
};

/// How large the host sees the work record.
inline constexpr std::size_t workRecordSize = 112;
static_assert(sizeof(DialogState) <= workRecordSize);

/// Shows the source as the camera sees it. Frames are expected to be of one size; what the destination has
/// beyond the source stays as it was. Without memory for a copy of the source nothing is written.
void render(FrameBuffer* source, FrameBuffer* destination, const Settings& settings, const LensSteps& steps);

}  // namespace CameraView

#endif
