// SPDX-License-Identifier: MIT
// What came into a filter before a frame, for filters that look back.
#ifndef VIREO_MLT_EARLIER_FRAMES_H
#define VIREO_MLT_EARLIER_FRAMES_H

#include "vireo/vireo.h"

#include <framework/mlt.h>

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <vector>

namespace vireo::mlt {

/// The producer whose frames an MLT filter sees; null where MLT does not tell.
mlt_producer clipOf(mlt_filter filter);

struct FrameCloser {
    void operator()(mlt_frame frame) const { mlt_frame_close(frame); }
};
using OwnedFrame = std::unique_ptr<mlt_frame_s, FrameCloser>;

/// The picture of one position, rendered when it is first asked for.
class Past {
public:
    /// `frame` is one of the position's that is not used for anything else; it may be null.
    Past(std::int64_t position, OwnedFrame frame) : position_(position), frame_(std::move(frame)) {}

    std::int64_t position() const { return position_; }

    /// Calls `render`, which gives the frame that is under way its image, and keeps a copy.
    template <class Render>
    int keep(Render&& render, std::uint8_t* const* image, const int* width, const int* height) {
        const std::lock_guard lock(mutex_);
        const int error = render();
        if (error == 0) take(*image, *width, *height);
        return error;
    }

    /// False where there is no picture of the target's size. `now` is a frame that the consumer asks for.
    bool copyTo(const VireoFrame& target, mlt_frame now);

private:
    void take(const std::uint8_t* image, int width, int height);
    void render(mlt_frame now, int width, int height);

    const std::int64_t position_;
    std::mutex mutex_;
    OwnedFrame frame_;
    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint8_t> pixels_;
};

/// The last one is the frame's own.
using Pasts = std::vector<std::shared_ptr<Past>>;

/// Of one filter. Frames that follow one another share what was rendered; any other begins anew, so that what
/// was changed in between shows.
class EarlierFrames {
public:
    /// What the frame at a position and up to `reach` before it show. Called for one frame at a time.
    Pasts at(mlt_filter filter, mlt_frame frame, std::uint32_t reach);

private:
    std::deque<std::shared_ptr<Past>> run_;
};

}  // namespace vireo::mlt

#endif
