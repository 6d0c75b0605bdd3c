// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_CONTINUOUS_TIMES_H
#define VIREO_APP_MEDIA_CONTINUOUS_TIMES_H

#include "app/media/ffmpeg_objects.h"

#include <cstdint>
#include <limits>
#include <map>

namespace vireo {

/// Makes the times of a file go on where its clock jumps, as it does where broadcasts were joined: what
/// follows begins behind what was there, all streams together.
class ContinuousTimes {
public:
    /// Packets in the order of the file. Where its format may jump, all of sound and picture.
    void correct(AVPacket& packet, const AVFormatContext& input);

    /// Whether the clock jumped so far.
    bool jumped() const { return shift_ != 0; }

private:
    /// Microseconds, as everything here.
    static constexpr std::int64_t never = std::numeric_limits<std::int64_t>::min();
    struct Clock {
        std::int64_t last = never;
        std::int64_t end = 0;           ///< By decoding times.
        std::int64_t shownEnd = never;  ///< By those of presentation.
        std::int64_t shift = 0;
    };

    /// A stream meets the jump of the one that came to it first, or one of its own.
    void jump(Clock& clock, std::int64_t decoded, std::int64_t shown, bool isVideo, bool isTogether);

    /// Subtitles are too far apart to tell a jump from a silence.
    std::int64_t nearestShift(std::int64_t time) const;

    std::map<int, Clock> clocks_;  ///< Of sound and picture, by the stream's number.
    std::int64_t shift_ = 0;       ///< Behind the last jump.
    std::int64_t earlierShift_ = 0;
    std::int64_t now_ = 0;
};

}  // namespace vireo

#endif
