// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FRAME_GRAPH_H
#define VIREO_APP_MEDIA_FRAME_GRAPH_H

#include "app/media/ffmpeg_frame.h"

#include <string>

namespace vireo {

/// A preparation as it is done to the frames of one input.
struct GraphPlan {
    Preparation preparation;
    int width = 0;  ///< Of the input's pictures, upright.
    int height = 0;
    std::string note;  ///< What was understood otherwise than it was said; a sentence, mostly empty.
};

/// Fits what was asked for to an input of that name. Throws Error where that cannot be.
GraphPlan planGraph(const Preparation& preparation, const VideoProperties& video, const std::string& name);

/// FFmpeg's own filters over frames of one size and format, which are brought upright on the way.
class FrameGraph {
public:
    /// `first` is one of the frames, `video` what they are like, `timeBase` that of their times. Throws
    /// Error.
    FrameGraph(const GraphPlan& plan, const AVFrame& first, const VideoProperties& video,
               AVRational timeBase);

    /// Whether it is made for frames like this one.
    bool takes(const AVFrame& frame) const;

    void push(FramePtr frame);

    /// The input ends at that time.
    void end(std::int64_t time);

    /// The next frame that is done; null where there is none yet.
    FramePtr pull();

    AVRational timeBase() const;

    /// The properties of its frames, where the input's are `video`.
    VideoProperties outputOf(const VideoProperties& video) const;

private:
    std::string text(const GraphPlan& plan, const AVFrame& first, const VideoProperties& video) const;

    FilterGraphPtr graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    int format_, width_, height_;
};

}  // namespace vireo

#endif
