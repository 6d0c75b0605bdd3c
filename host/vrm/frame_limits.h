// SPDX-License-Identifier: MIT
// Frames that are too large for a filter. Some filters keep sizes in 16 bits, as old projects know them, and
// give a wrong picture beyond without a word: hosts ask here first.
#ifndef VIREO_HOST_VRM_FRAME_LIMITS_H
#define VIREO_HOST_VRM_FRAME_LIMITS_H

#include "host/host_export.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

namespace VRM {

/// The largest frame, or field of one, that a filter renders right whatever its settings are.
struct FrameLimits {
    static constexpr std::int32_t none = std::numeric_limits<std::int32_t>::max();

    std::int32_t width = none;     ///< Pixels.
    std::int32_t height = none;    ///< Pixels.
    std::int32_t rowBytes = none;  ///< From one row to the next, without the sign.
};

/// By the filter's match name. A filter that is not known has no limits.
VIREO_HOST_API FrameLimits frameLimits(std::string_view matchName);

/// Why a filter does not take frames of a size: a sentence without full stop that begins with `filterName`.
/// Empty where it takes them.
VIREO_HOST_API std::string frameRefusal(std::string_view filterName, const FrameLimits& limits,
                                        std::int32_t width, std::int32_t height, std::int64_t rowBytes);

}  // namespace VRM

#endif
