// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_READER_H
#define VIREO_APP_MEDIA_FFMPEG_READER_H

#include "app/media/clip_index.h"
#include "app/media/ffmpeg_input.h"
#include "app/media/other_packets.h"
#include "app/media/prepared_video.h"

#include <deque>
#include <limits>

namespace vireo {

/// Reads the part of an input that a job asks for: the video's frames, and the other streams' packets beside
/// them. Opening reads up to the first frame that is rendered.
class FfmpegReader : public MediaReader {
public:
    FfmpegReader(const RenderJob& job, int lookBack, const StopRequest& stop, Messages& messages);

    const SourceInfo& info() const override { return info_; }
    std::unique_ptr<SourceFrame> read() override;

    const VideoProperties& video() const { return prepared_.video(); }
    const AVFormatContext& input() const { return input_.context(); }
    int videoStream() const { return input_.videoStream(); }

    /// See ClipIndex; of the frames as they are rendered.
    const std::vector<std::int64_t>& frameTimes() const { return clip_.times; }

    /// The time of the clip's first frame.
    std::int64_t clipStart() const { return prepared_.firstTime(); }

    /// The time of the first frame that is rendered.
    std::int64_t firstTimeRendered() const { return renderedTime_; }

    /// The part that is rendered, in seconds of the input's own clock.
    double partStart() const { return partStart_; }
    double partEnd() const { return partEnd_; }

    /// What to take off the input's times to have the output's, in seconds of the input's clock.
    double timeOrigin() const { return timeOrigin_; }

    /// Whether no frame is shown before the output's time 0.
    bool beginsAtZero() const { return timeOf(*ahead_.front()) >= timeOrigin_; }

    /// See OtherPackets.
    std::optional<std::int64_t> firstTimeOf(const AVStream& stream) const {
        return others_.firstTimeOf(stream);
    }
    void connect(PacketSink sink) { others_.connect(std::move(sink)); }

    /// Reads on to a time in seconds of the input's clock, without decoding: only the other streams' packets
    /// are wanted.
    void passOthers(double until);
    void passOthersToEnd();

private:
    PacketPtr nextVideoPacket();
    void seekToPart(const RenderJob& job, int lookBack);
    void readToPart(const RenderJob& job, int lookBack);
    void settlePart(const FfmpegFrame& first);
    void describe(const RenderJob& job);
    void noteEnd(std::int64_t last);
    void noteBreak();

    double timeOf(const FfmpegFrame& frame) const { return seconds(frame.properties().pts, clip_.timeBase); }
    bool beforePart(const SourceFrame& frame) const;
    bool afterPart(const SourceFrame& frame) const;

    const StopRequest& stop_;
    Messages& messages_;
    const bool strict_;
    FrameRange range_;
    double start_ = noTime;  ///< Seconds from the first frame, as `end_`.
    double end_ = std::numeric_limits<double>::infinity();

    FfmpegInput input_;
    OtherPackets others_;
    VideoDecoder decoder_;
    PreparedVideo prepared_;
    ClipIndex clip_;
    SourceInfo info_;

    std::int64_t renderedTime_ = 0;
    double partStart_ = noTime;
    double partEnd_ = std::numeric_limits<double>::infinity();
    double timeOrigin_ = 0;
    std::deque<std::unique_ptr<FfmpegFrame>> ahead_;  ///< Read while opening.
    bool done_ = false;
};

}  // namespace vireo

#endif
