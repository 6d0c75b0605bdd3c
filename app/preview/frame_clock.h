// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_PREVIEW_FRAME_CLOCK_H
#define VIREO_APP_PREVIEW_FRAME_CLOCK_H

#include <chrono>

namespace vireo {

/// When frames are due, and which come too late to be shown. Times of the clip are in seconds.
class FrameClock {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// However late frames are, one is shown this often.
    static constexpr std::chrono::milliseconds longestGap{250};

    /// The clip runs on from here.
    void start(Time now, double seconds) {
        start_ = now;
        startSeconds_ = seconds;
    }

    Time due(double seconds) const {
        return start_ + std::chrono::duration_cast<Time::duration>(
                            std::chrono::duration<double>(seconds - startSeconds_));
    }

    /// A frame was shown.
    void showed(Time now) { shown_ = now; }

    /// Whether a frame is not worth showing: the next one is due as well.
    bool isTooLate(Time now, double seconds, double frameDuration) const {
        return now >= due(seconds + frameDuration) && now - shown_ < longestGap;
    }

private:
    Time start_, shown_;
    double startSeconds_ = 0;
};

}  // namespace vireo

#endif
