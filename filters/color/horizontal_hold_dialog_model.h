// SPDX-License-Identifier: MIT
// The rules of Horizontal Hold's settings dialog, without its window.
#ifndef VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_MODEL_H
#define VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_DIALOG_MODEL_H

#include "framework/dialog_geometry.h"

#include <cstdint>

namespace HorizontalHold {

inline constexpr int largestPosition = 255;
inline constexpr int middlePosition = 127;

// One step of the slider is an eighth of a pixel a row.
inline constexpr int stepShift = 13;

/// Where the slider stands for an offset in 16.16 pixels a row, before the slider limits it to its range.
constexpr int positionOf(std::int32_t offset) {
    const std::int64_t magnitude = offset < 0 ? -std::int64_t{offset} : offset;
    const auto steps = static_cast<int>(magnitude >> stepShift);
    return (offset < 0 ? -steps : steps) + middlePosition;
}

constexpr std::int32_t offsetAt(int position) { return (position - middlePosition) * (1 << stepShift); }

/// Above the slider, in its middle.
constexpr Box previewBox(const Box& client, const Box& slider) {
    return previewBetween(slider.left, slider.right, client.top, slider.top, 240, 180);
}

}  // namespace HorizontalHold

#endif
