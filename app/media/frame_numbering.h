// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FRAME_NUMBERING_H
#define VIREO_APP_MEDIA_FRAME_NUMBERING_H

#include <cstdint>
#include <set>
#include <vector>

namespace vireo {

/// Gives decoded frames their numbers in the clip and finds the ones between them that were lost: packets
/// that went into the decoder and whose time has passed without a frame.
class FrameNumbering {
public:
    /// `times`: the presentation times of all frames of the clip in order, where known. Else frames are
    /// counted from the first one.
    explicit FrameNumbering(std::vector<std::int64_t> times = {});

    /// A packet goes into the decoder.
    void sent(std::int64_t time) { pending_.insert(time); }

    /// The decoder complained about a packet.
    void failed() { ++failures_; }

    struct Lost {
        std::int64_t number;
        std::int64_t time;
    };

    struct Numbered {
        std::int64_t number;
        std::vector<Lost> lost;  ///< Before this frame.
    };

    /// A frame came out of the decoder.
    Numbered next(std::int64_t time);

    /// The decoder is drained: what was lost at the end.
    std::vector<Lost> rest();

    /// The number that the next frame would have.
    std::int64_t following() const { return next_; }

private:
    std::vector<Lost> lostBefore(std::int64_t time);

    std::vector<std::int64_t> times_;
    std::multiset<std::int64_t> pending_;
    std::int64_t failures_ = 0;
    std::int64_t next_ = 0;
    bool begun_ = false;
};

}  // namespace vireo

#endif
