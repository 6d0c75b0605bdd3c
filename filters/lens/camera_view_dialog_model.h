// SPDX-License-Identifier: MIT
// The rules of Camera View's settings dialog, without its window. The state is the work record itself.
#ifndef VIREO_FILTERS_LENS_CAMERA_VIEW_DIALOG_MODEL_H
#define VIREO_FILTERS_LENS_CAMERA_VIEW_DIALOG_MODEL_H

#include "filters/lens/camera_view.h"
#include "framework/dialog_geometry.h"

#include <array>
#include <optional>

namespace CameraView {

/// The rows of a slider and an edit box each; the edit box's id is the slider's plus one.
enum Row : std::size_t { Longitude, Latitude, Roll, FocalLength, Distance, Zoom };

struct RowRange {
    int sliderId;
    int smallest;
    int largest;
};

inline constexpr std::array<RowRange, 6> rows{
    {{10, 0, 360}, {12, 0, 360}, {14, 0, 360}, {16, 1, 1000}, {18, 1, 500}, {20, 40, 400}}};

using Positions = std::array<int, rows.size()>;

constexpr bool isAngle(Row row) { return row <= Roll; }

/// The three areas: the source picture, the swatch of the fill colour and the preview, which stands below the
/// source picture in its group.
void layOut(DialogState& state, const Box& sample, const Box& swatch, const Box& group);

/// What typing into an edit box comes to.
struct Edit {
    std::optional<int> slider;     ///< The slider takes this position.
    std::optional<int> writeBack;  ///< The edit box shows this instead of what was typed.
    bool beep = false;
};

Edit editAngle(int typed);

/// Focal length and distance: what is out of range, or shown already, changes nothing.
Edit editLength(const DialogState& state, Row row, std::optional<int> typed);

/// The limit of 628 lies above the slider's end on purpose: between them the slider goes to its end.
Edit editZoom(int current, double typed);

/// Whether the preview has to be rendered for the sliders' positions, which it then shows.
bool takePositions(DialogState& state, const Positions& positions);

/// Nothing counts as rendered or written any more.
void forgetShown(DialogState& state);

void reset(DialogState& state);

Settings settingsOf(const DialogState& state);

/// The source's pixel under a point of the sample area, in the source's picture coordinates.
struct SourcePoint {
    int x;
    int y;
};
std::optional<SourcePoint> sampledPoint(const DialogState& state, int x, int y,
                                        const FrameRect& sourceBounds);

/// A pixel word as a colour reference, red in the low byte.
constexpr std::uint32_t colorOfPixel(std::uint32_t pixel) {
    return (pixel >> 16 & 0xFF) | (pixel & 0xFF00) | (pixel & 0xFF) << 16;
}

}  // namespace CameraView

#endif
