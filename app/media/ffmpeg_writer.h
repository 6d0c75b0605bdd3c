// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_WRITER_H
#define VIREO_APP_MEDIA_FFMPEG_WRITER_H

#include "app/media/frame_output.h"
#include "app/media/output_clock.h"
#include "app/media/stream_copies.h"

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
    /// `reader` is the input where it has other streams, else null; `video` its properties. Where the video
    /// was encoded before, `encoded` tells how, and packets are written instead of frames.
    FfmpegWriter(const RenderJob& job, FfmpegReader* reader, const VideoProperties& video, int depth,
                 const StopRequest& stop, Messages& messages, const AVCodecParameters* encoded = nullptr);

    std::unique_ptr<OutputFrame> convert(const Picture& picture, const SourceFrame& source) override;
    void write(std::unique_ptr<OutputFrame> frame) override;
    void finish() override;
    void appear() override { muxer_.appear(); }
    std::int64_t bytes() const override { return muxer_.bytes(); }

    const EncoderChoice& choice() const { return choice_; }

    /// What becomes of each of the input's streams.
    TrackFate fateOf(int stream) const { return others_ ? others_->fateOf(stream) : TrackFate::Rendered; }

    /// Where a source frame stands in the output, in its clock.
    std::int64_t timeOf(std::int64_t sourceTime) const { return clock_.timeOf(sourceTime); }
    AVRational timeBase() const { return clock_.timeBase(); }

    /// Times are the output's.
    void writeEncoded(PacketPtr packet);

private:
    void encode(const AVFrame* frame);
    FramePtr onDevice(const AVFrame& frame) const;

    EncoderChoice choice_;
    Muxer muxer_;
    CodecContextPtr encoder_;
    AVStream* stream_ = nullptr;
    std::optional<FrameOutput> frames_;
    std::optional<StreamCopies> others_;
    PassLog* firstPass_;  ///< Where this is the first of two passes.
    bool encodes_;
    OutputClock clock_;
};

}  // namespace vireo

#endif
