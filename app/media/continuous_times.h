// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_CONTINUOUS_TIMES_H
#define VIREO_APP_MEDIA_CONTINUOUS_TIMES_H

#include "app/media/ffmpeg_objects.h"

#include <cstdint>
#include <limits>
#include <map>

namespace vireo {

/// Makes the times of a file go on where they turn back, as they do where broadcasts were joined: what
/// follows is moved behind what was there.
class ContinuousTimes {
public:
    /// Packets in the order of the file.
    void correct(AVPacket& packet, const AVStream& stream);

    /// Whether times turned back so far.
    bool turnedBack() const { return shift_ != 0; }

private:
    /// Microseconds, as everything here.
    struct Clock {
        std::int64_t last = std::numeric_limits<std::int64_t>::min();
        std::int64_t end = 0;
        std::int64_t shift = 0;
    };

    std::map<int, Clock> clocks_;  ///< By the stream's number.
    std::int64_t shift_ = 0;       ///< Of the stream that turned back last; the others follow.
};

}  // namespace vireo

#endif
