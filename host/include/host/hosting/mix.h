// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HOSTING_MIX_H
#define VIREO_HOST_HOSTING_MIX_H

#include "host/host_export.h"
#include "host/pixkit/frame_buffer.h"

namespace hosting {

/// The mix, in per cent, at which a filter's result stands alone.
constexpr int fullMix = 100;

/// Lays `percent` (1 to 99) of a filter's result over its source, at the depth of the buffers. Alpha becomes
/// (s (100 - m) + d m) / 100; colours the same weighted by their alphas, unweighted where both alphas are 0;
/// whole numbers are rounded half up. Both buffers have the same bounds and format.
VIREO_HOST_API void mixInto(const FrameBuffer& source, const FrameBuffer& result, int percent);

}  // namespace hosting

#endif
