// SPDX-License-Identifier: MIT
// What Camera Blur's dialog shares with its render.
#ifndef VIREO_FILTERS_WARP_CAMERA_BLUR_H
#define VIREO_FILTERS_WARP_CAMERA_BLUR_H

#include "host/pixkit/pixkit.h"
#include "host/vrm/filter_invocation.h"

#include <cstddef>
#include <cstdint>

namespace CameraBlur {

struct Settings {
    std::uint16_t amount;  ///< Percent; at 100 the blur reaches a tenth of the frame in each direction.
};

/// The work record that the entry hands to the dialog.
struct WorkRecordFields {
    Settings settings;  ///< What the slider last reported.
    FilterInvocation** invocation;
    FrameRect preview;  ///< In the dialog's client area.
};

/// How large the host sees it.
inline constexpr std::size_t workRecordSize = 32;
static_assert(sizeof(WorkRecordFields) <= workRecordSize);

void render(FrameBuffer* source, FrameBuffer* destination, const Settings& settings);

}  // namespace CameraBlur

#endif
