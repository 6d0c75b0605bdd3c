// SPDX-License-Identifier: MIT
// The rules of Extract's settings dialog, without its window.
#ifndef VIREO_FILTERS_WARP_EXTRACT_DIALOG_MODEL_H
#define VIREO_FILTERS_WARP_EXTRACT_DIALOG_MODEL_H

#include "filters/warp/extract.h"
#include "framework/dialog_geometry.h"
#include "framework/frame_view.h"

#include <array>
#include <cstdint>
#include <optional>

namespace Extract {

/// What has to be drawn or written anew; values are combined.
enum Redraw : unsigned {
    Nothing = 0,
    Low = 1,       ///< The range's handles and the low field.
    High = 2,      ///< The range's handles and the high field.
    Softness = 4,  ///< The softness field and slider.
    Picture = 8    ///< The curve and the preview.
};

enum class Field { Low, High, Softness };

/// What typing a field's value comes to.
struct Commit {
    bool refused = false;  ///< Beep and show the stored value again.
    unsigned redraw = Nothing;
};

class DialogModel {
public:
    static constexpr int largestSoftness = 100;

    explicit DialogModel(const Settings& settings) : settings_(settings) {}

    const Settings& settings() const { return settings_; }
    const MarkerStrip& strip() const { return strip_; }
    const Box& preview() const { return preview_; }

    /// Where the range's line, the histogram and the client area lie. The preview stands beside the
    /// histogram.
    void layOut(const Box& line, const Box& histogram, const Box& client);

    void countPixels(const FrameView& frame);

    /// One of 256 bars in the histogram's own box, from its bottom.
    Box histogramBar(const Box& histogram, int i) const;

    /// One of 256 columns in a box for the curve.
    static Box curveColumn(const Box& box, const TransferCurve& curve, int i);

    int valueOf(Field field) const;

    void press(int x, int y);
    unsigned drag(int x);
    Commit commit(Field field, std::optional<int> typed);
    unsigned slideSoftness(int position);
    unsigned toggleInvert();

private:
    unsigned change(std::uint16_t& value, int to, unsigned redraw);

    Settings settings_;
    MarkerStrip strip_;
    Box preview_;
    std::array<std::uint32_t, 256> histogram_{};
    std::uint32_t largestCount_ = 0;
    std::optional<Field> dragged_;
    int grabOffset_ = 0;
};

}  // namespace Extract

#endif
