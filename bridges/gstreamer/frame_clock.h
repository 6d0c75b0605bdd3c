// SPDX-License-Identifier: MIT
// Which frame of its clip a buffer is.
#ifndef VIREO_BRIDGES_GSTREAMER_FRAME_CLOCK_H
#define VIREO_BRIDGES_GSTREAMER_FRAME_CLOCK_H

#include <cstdint>
#include <optional>

namespace vireo::gstreamer {

class FrameClock {
public:
    /// Frames a second; 0 where they vary.
    explicit FrameClock(double rate = 0) : rate_(rate) {}

    double rate() const { return rate_; }

    /// The number of the next buffer, which stands so many seconds behind the clip's begin, if that is known.
    std::int64_t next(std::optional<double> seconds);

    /// What comes does not follow what was.
    void restart() { last_.reset(); }

private:
    double rate_;
    std::optional<std::int64_t> last_;
};

}  // namespace vireo::gstreamer

#endif
