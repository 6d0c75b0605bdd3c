// SPDX-License-Identifier: MIT
// What Horizontal Hold's render shares with its dialog.
#ifndef VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_H
#define VIREO_FILTERS_COLOR_HORIZONTAL_HOLD_H

#include "framework/dialog_launcher.h"

#include <cstddef>
#include <cstdint>

namespace HorizontalHold {

/// How far a row is moved further than the one before, in 16.16 pixels, at the clip's begin and end.
struct Settings {
    std::int32_t offset;
    std::int32_t endStep;
};

static_assert(sizeof(Settings) == 8);

/// How large the host sees the record that becomes the dialog's.
inline constexpr std::size_t workRecordBytes = 48;

/// Where in the clip a frame stands. A length of 0 counts as its begin.
struct ClipPosition {
    std::uint32_t time;
    std::uint32_t duration;
};

/// Rotates each row of the source into the destination, by an amount that grows from row to row.
/// `rowMultiplier` is 1, or 2 for frames of half height.
void shiftRows(FrameBuffer* source, FrameBuffer* destination, const Settings& settings,
               const ClipPosition& position, int rowMultiplier);

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace HorizontalHold

#endif
