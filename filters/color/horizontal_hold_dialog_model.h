// SPDX-License-Identifier: MIT
// The rules of Horizontal Hold's settings dialog, without its window.
#ifndef VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_MODEL_H
#define VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_MODEL_H

#include "filters/color/horizontal_hold.h"
#include "framework/dialog_geometry.h"

#include <cstdint>

namespace HorizontalHold {

class DialogModel {
public:
    static constexpr int largestPosition = 255;

    explicit DialogModel(const Settings& settings) : settings_(settings) {}

    const Settings& settings() const { return settings_; }
    const Box& preview() const { return preview_; }

    /// The preview stands above the slider, in its middle.
    void layOut(const Box& client, const Box& slider) {
        preview_ = previewBetween(slider.left, slider.right, client.top, slider.top, 240, 180);
    }

    /// Where the slider stands, before it limits itself to its range.
    int position() const {
        const std::int64_t offset = settings_.offset;
        const auto steps = static_cast<int>((offset < 0 ? -offset : offset) >> stepShift);
        return (offset < 0 ? -steps : steps) + middlePosition;
    }

    /// Start and end become one value.
    void slide(int position) {
        const std::int32_t offset = (position - middlePosition) * (1 << stepShift);
        settings_ = {offset, offset};
    }

private:
    static constexpr int middlePosition = 127;
    static constexpr int stepShift = 13;  ///< One step of the slider is an eighth of a pixel a row.

    Settings settings_;
    Box preview_;
};

}  // namespace HorizontalHold

#endif
