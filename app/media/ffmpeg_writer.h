// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_WRITER_H
#define VIREO_APP_MEDIA_FFMPEG_WRITER_H

#include "app/media/frame_output.h"
#include "app/media/stream_copies.h"

#include <map>
#include <optional>

namespace vireo {

/// A frame in the encoder's format.
class FfmpegOutputFrame : public OutputFrame {
public:
    explicit FfmpegOutputFrame(FramePtr made) : frame(std::move(made)) {}
    FramePtr frame;
};

/// Encodes video into a container, with the other streams of the input beside it.
class FfmpegWriter : public MediaWriter {
public:
    /// `reader` is the input where it has other streams, else null; `video` its properties.
    FfmpegWriter(const RenderJob& job, FfmpegReader* reader, const VideoProperties& video, int depth,
                 const StopRequest& stop, Messages& messages);

    std::unique_ptr<OutputFrame> convert(const Picture& picture, const SourceFrame& source) override;
    void write(std::unique_ptr<OutputFrame> frame) override;
    void finish() override;

private:
    void openEncoder(const RenderJob& job, const VideoProperties& video);
    void encode(const AVFrame* frame);

    EncoderChoice choice_;
    Muxer muxer_;
    CodecContextPtr encoder_;
    AVStream* stream_ = nullptr;
    std::optional<FrameOutput> frames_;
    std::optional<StreamCopies> others_;
    bool fixedRate_;  ///< Frames are counted, since the output has no times of its own.
    AVRational sourceBase_;
    double timeOrigin_;
    std::int64_t lastTime_ = std::numeric_limits<std::int64_t>::min();
    std::map<std::int64_t, std::int64_t> durations_;  ///< By time, of frames in the encoder.
};

}  // namespace vireo

#endif
