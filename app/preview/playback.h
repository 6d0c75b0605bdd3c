// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_PREVIEW_PLAYBACK_H
#define VIREO_APP_PREVIEW_PLAYBACK_H

#include "app/preview/frame_clock.h"
#include "app/preview/preview_controls.h"
#include "engine/chain/clip.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

namespace vireo {

class StopRequest;

/// Between the window, whose thread asks, and the pipeline, whose threads ask what is to be shown when.
class Playback : public PreviewControls {
public:
    /// The part that is played.
    struct Part {
        std::int64_t first = 0;
        std::optional<std::int64_t> last;
        double frameRate = 25;
    };

    void togglePause() override;
    void step(int frames) override;
    void skip(double seconds) override;
    void jump(double share) override;
    void close() override;

    /// A pipeline begins, which `stop` ends when another frame is wished for or the window is closed.
    void begin(StopRequest& stop, const Part& part);
    void end();

    /// Waits until a frame is due. False where it is too late, or nothing more is to be shown of this
    /// pipeline.
    bool waitFor(const FramePosition& position);

    /// Whether a frame is due so long ago that rendering it is not worth it.
    bool isTooLate(const FramePosition& position) const;

    /// The frame to go on from, once it is wished for; nothing where the window is closed. Throws Error on
    /// an interruption.
    std::optional<std::int64_t> nextWish();

    /// Whether the window is closed or another frame is wished for.
    bool isOver() const;

    bool isPaused() const;

private:
    void wishFor(std::int64_t frame);
    std::int64_t goal() const;
    void stop();

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    FrameClock clock_;
    StopRequest* stop_ = nullptr;
    Part part_;
    FramePosition shown_;
    bool isFirst_ = true;  ///< The pipeline's first frame is shown at once.
    int steps_ = 0;        ///< So many frames behind it, too.
    bool isPaused_ = false;
    bool isEnded_ = false;  ///< The last frame is shown.
    bool isClosed_ = false;
    std::optional<std::int64_t> wish_;
    std::optional<std::int64_t> awaited_;  ///< What was wished for and is not shown yet.
};

}  // namespace vireo

#endif
