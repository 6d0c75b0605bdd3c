// SPDX-License-Identifier: MIT
// What Extract's render shares with its dialog.
#ifndef VIREO_FILTERS_WARP_EXTRACT_H
#define VIREO_FILTERS_WARP_EXTRACT_H

#include "filters/warp/extract_kernels.h"
#include "framework/dialog_launcher.h"

namespace Extract {

struct Settings {
    std::uint16_t low;       ///< 0 to high.
    std::uint16_t high;      ///< low to 255.
    std::uint16_t softness;  ///< 0 to 100.
    std::uint8_t invert;

    template <class Visit>
    void fields(Visit&& visit) {
        visit(low);
        visit(high);
        visit(softness);
        visit(invert);
    }
};

/// How large the host sees the record that becomes the dialog's.
inline constexpr std::size_t workRecordBytes = 1176;

/// White inside the range, black outside, with a ramp of the softness around either end. Any settings give a
/// curve, also those outside their ranges.
TransferCurve transferCurve(const Settings& settings);

/// The matte of `source`, into `destination`.
void drawMatte(FrameBuffer* source, FrameBuffer* destination, const Settings& settings);

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace Extract

#endif
