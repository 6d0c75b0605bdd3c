// SPDX-License-Identifier: MIT
// The rules of Camera View's settings dialog, without its window.
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

/// What typing into an edit box comes to.
struct Edit {
    std::optional<int> slider;     ///< The slider takes this position.
    std::optional<int> writeBack;  ///< The edit box shows this instead of what was typed.
    bool beep = false;
};

/// In the source's picture coordinates.
struct SourcePoint {
    int x;
    int y;
};

/// A pixel word as a colour reference, red in the low byte.
constexpr std::uint32_t colorOfPixel(std::uint32_t pixel) {
    return (pixel >> 16 & 0xFF) | (pixel & 0xFF00) | (pixel & 0xFF) << 16;
}

class DialogModel {
public:
    explicit DialogModel(const Settings& settings);

    /// What the preview shows, with the preview's own size as the reference.
    Settings settings() const;
    std::int16_t valueOf(Row row) const { return values_[row]; }
    std::uint32_t fillColor() const { return fillColor_; }
    bool fillsAlphaChannel() const { return fillAlphaChannel_ != 0; }

    const Box& sample() const { return sample_; }
    const Box& swatch() const { return swatch_; }
    const Box& preview() const { return preview_; }

    /// The three areas: the source picture, the swatch of the fill colour and the preview, which stands below
    /// the source picture in its group.
    void layOut(const Box& sample, const Box& swatch, const Box& group);

    static Edit editAngle(int typed);

    /// Focal length and distance: what is out of range, or shown already, changes nothing.
    Edit editLength(Row row, std::optional<int> typed) const;

    /// The limit of 628 lies above the slider's end on purpose: between them the slider goes to its end.
    static Edit editZoom(int current, double typed);

    /// What an edit box shows. The dialog tells what it writes there.
    std::int16_t written(Row row) const { return static_cast<std::int16_t>(shown_[row].written); }
    void write(Row row, int value) { shown_[row].written = static_cast<std::uint16_t>(value); }

    /// Whether the preview has to be rendered for the sliders' positions, which it then shows.
    bool takePositions(const Positions& positions);

    /// Nothing counts as rendered or written any more.
    void forgetShown();

    void reset();

    void fillAlphaChannel(bool fills) { fillAlphaChannel_ = fills ? 1 : 0; }
    void fillWith(std::uint32_t color) { fillColor_ = color; }
    /// The next preview is rendered also where no slider moved.
    void redraw() { redraw_ = true; }

    /// The source's pixel under a point of the sample area.
    std::optional<SourcePoint> sampledPoint(int x, int y, const FrameRect& sourceBounds) const;

    /// Edit boxes report what the dialog itself writes as if it were typed; such reports are not acted on
    /// while one of these lives.
    class OwnWriting {
    public:
        explicit OwnWriting(DialogModel& model) : model_(model), before_(model.writing_) {
            model.writing_ = true;
        }
        OwnWriting(const OwnWriting&) = delete;
        OwnWriting& operator=(const OwnWriting&) = delete;
        ~OwnWriting() { model_.writing_ = before_; }

    private:
        DialogModel& model_;
        bool before_;
    };
    bool isWriting() const { return writing_; }

private:
    struct Shown {
        std::uint16_t rendered;  ///< The value that the preview shows.
        std::uint16_t written;   ///< The value that the edit box shows.
    };

    std::array<Shown, rows.size()> shown_;
    std::array<std::int16_t, rows.size()> values_;
    Box sample_;
    Box swatch_;
    Box preview_;
    std::uint32_t fillColor_;
    std::uint16_t fillAlphaChannel_;
    bool redraw_ = false;
    bool writing_ = false;
};

}  // namespace CameraView

#endif
