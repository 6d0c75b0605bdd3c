// SPDX-License-Identifier: MIT
// What Extract's dialog shares with its render.
#ifndef VIREO_FILTERS_WARP_EXTRACT_H
#define VIREO_FILTERS_WARP_EXTRACT_H

#include "filters/warp/extract_kernels.h"
#include "host/vrm/filter_invocation.h"

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

inline constexpr std::size_t settingsSize = 8;

/// How large the host sees the work record that the entry hands to the dialog. Behind the head it is zero.
inline constexpr std::size_t workRecordSize = 1176;

struct WorkRecordHead {
    Settings settings;
    FilterInvocation** invocation;
};

/// White inside the range, black outside, with a ramp of the softness around either end. Any settings give a
/// curve, also those outside their ranges.
TransferCurve transferCurve(const Settings& settings);

/// Renders the matte of `source` into `destination`.
void render(FrameBuffer* source, FrameBuffer* destination, const Settings& settings);

}  // namespace Extract

#endif
