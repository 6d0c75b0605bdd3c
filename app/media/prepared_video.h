// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_PREPARED_VIDEO_H
#define VIREO_APP_MEDIA_PREPARED_VIDEO_H

#include "app/media/frame_graph.h"
#include "app/media/video_decoder.h"

#include <deque>
#include <optional>

namespace vireo {

/// The frames of a decoder as the chain gets them: through FFmpeg's own filters where a job asks for that.
/// Numbers and times are those of what comes out.
class PreparedVideo {
public:
    /// The decoder outlives it.
    PreparedVideo(VideoDecoder& decoder, const FfmpegInput& input, const RenderJob& job, Messages& messages);

    /// To be called before the first frame is asked for. Returns the clip that comes out.
    ClipIndex setClip(const ClipIndex& source);

    /// The next frame; null behind the last one and when a stop is requested.
    std::unique_ptr<FfmpegFrame> next();

    /// Forgets all frames: the input is read from elsewhere.
    void restart();

    /// Where the input has to be read from for a frame to come out whole, in its own clock.
    std::int64_t sourceTimeFor(std::int64_t frame) const;

    void setLastWanted(std::optional<std::int64_t> frame) {
        if (!rate_) decoder_.setLastWanted(frame);
    }
    void setPremultiplied(bool premultiplied);
    void setDithers(bool dithers);

    const VideoProperties& video() const { return isPassedOn_ ? decoder_.video() : video_; }
    std::int64_t firstTime() const;
    std::int64_t following() const { return rate_ ? lastNumber_ + 1 : decoder_.following(); }

private:
    /// A frame in the graph, where one goes in for each that comes out; or one that was lost, in its place.
    struct Entered {
        std::unique_ptr<FfmpegFrame> lost;
        FramePosition position;
        std::int64_t time = 0, duration = 0;
    };

    bool advance();
    void enter(std::unique_ptr<FfmpegFrame> frame);
    void push(DecodedFrame& frame);
    void build(const AVFrame& first);
    void end(std::int64_t time);
    void emit(FramePtr frame);
    void emitAtRate(FramePtr frame);
    void emitLost();
    void add(FramePtr frame, const FramePosition& position);
    std::int64_t numberAt(std::int64_t sourceTime) const;
    std::int64_t countUpTo(std::int64_t end) const;

    VideoDecoder& decoder_;
    const FfmpegInput& input_;
    Messages& messages_;
    const Preparation preparation_;
    std::optional<AVRational> rate_;  ///< Where frames are dropped or repeated.
    const bool isPassedOn_;
    ClipIndex source_, clip_;
    AVRational timeBase_{1, 25};
    std::optional<GraphPlan> plan_;
    std::optional<FrameGraph> graph_;
    bool isEmptying_ = false;                ///< The graph takes no more frames.
    std::unique_ptr<DecodedFrame> waiting_;  ///< For a graph of its own, when this one is empty.
    VideoProperties video_;
    std::deque<Entered> entered_;
    std::deque<std::unique_ptr<FfmpegFrame>> ready_;
    struct Span {
        std::int64_t begin, end;
    };
    std::deque<Span> impaired_;  ///< Frames at a rate, in the place of those that were lost.
    std::int64_t lastNumber_ = -1;
    std::int64_t end_ = 0;  ///< Of the input so far, from its first frame.
    bool ended_ = false;
};

}  // namespace vireo

#endif
