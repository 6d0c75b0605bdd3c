// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/frame_clock.h"

#include <algorithm>
#include <cmath>

namespace vireo::gstreamer {
namespace {

constexpr double usualRate = 25;  ///< What the engine takes for no rate.

/// In frames. Cameras stamp theirs when they get round to it.
constexpr double largestJitter = 0.75;

/// The engine counts fields in 32 bits.
constexpr double lastFrame = INT32_MAX / 2;

}  // namespace

std::int64_t FrameClock::next(std::optional<double> seconds) {
    const std::int64_t following = last_ ? *last_ + 1 : 0;
    std::int64_t number = following;
    if (seconds) {
        const double exact = std::clamp(*seconds * (rate_ > 0 ? rate_ : usualRate), 0.0, lastFrame);
        const bool follows =
            last_ && (rate_ == 0 || std::abs(exact - static_cast<double>(following)) < largestJitter);
        if (!follows) number = std::llround(exact);
    }
    last_ = number;
    return number;
}

}  // namespace vireo::gstreamer
