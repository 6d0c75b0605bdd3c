// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_READER_H
#define VIREO_APP_MEDIA_FFMPEG_READER_H

#include "app/media/continuous_times.h"
#include "app/media/ffmpeg_frame.h"
#include "app/media/ffmpeg_io.h"
#include "app/media/frame_numbering.h"
#include "app/media/packet_index.h"

#include <deque>
#include <functional>
#include <limits>
#include <set>

namespace vireo {

/// Takes the packets of the other streams, on the reader's thread. Their times are the input's.
using PacketSink = std::function<void(PacketPtr packet)>;

/// Demultiplexes an input and decodes its video. Opening reads up to the first frame that is rendered.
class FfmpegReader : public MediaReader {
public:
    FfmpegReader(const RenderJob& job, int lookBack, const StopRequest& stop, Messages& messages);

    const SourceInfo& info() const override { return info_; }
    std::unique_ptr<SourceFrame> read() override;

    const VideoProperties& video() const { return video_; }
    const AVFormatContext& input() const { return *input_; }
    int videoStream() const { return stream_; }

    /// The times of the clip's frames in order, in the stream's time base, where they were looked up: for a
    /// part of a clip that can be sought. Else empty.
    const std::vector<std::int64_t>& frameTimes() const { return times_; }

    /// The time of the first frame that is rendered.
    std::int64_t firstTimeRendered() const { return renderedTime_; }

    /// The part that is rendered, in seconds of the input's own clock.
    double partStart() const { return partStart_; }
    double partEnd() const { return partEnd_; }

    /// What to take off the input's times to have the output's, in seconds of the input's clock.
    double timeOrigin() const { return timeOrigin_; }

    /// Whether no frame is shown before the output's time 0.
    bool beginsAtZero() const {
        return seconds(ahead_.front()->properties().pts, video_.timeBase) >= timeOrigin_;
    }

    /// The time of another stream's first packet, in its time base, where it was read already.
    std::optional<std::int64_t> firstTimeOf(const AVStream& stream) const;

    /// From here on packets of other streams go to `sink`, those that were read already at once.
    void connect(PacketSink sink);

    /// Reads on to a time in seconds of the input's clock, without decoding: only the other streams' packets
    /// are wanted.
    void passOthers(double until);
    void passOthersToEnd();

private:
    void open(const RenderJob& job);
    void openDecoder();
    void findLength(const RenderJob& job);
    void seekToPart(const RenderJob& job, int lookBack);
    void seekTo(std::int64_t time);
    void readClipProperties();
    void readToPart(const RenderJob& job, int lookBack);
    void describe(const RenderJob& job);
    std::int64_t framesBefore(double time) const;
    void noteEnd(std::int64_t last);
    void noteBreak();

    std::unique_ptr<FfmpegFrame> decode();
    void demux();
    PacketPtr nextPacket();
    bool breaksOff(const AVPacket& packet) const;
    void noteFailure(int code);
    void takeLost(const std::vector<FrameNumbering::Lost>& lost);
    void takeMissing();
    void take(FramePtr frame);
    void setProperties(const AVFrame& frame);
    void place(SourceFrame& frame, std::int64_t number, std::int64_t time, Interlacing interlacing) const;
    bool beforePart(const SourceFrame& frame) const;
    bool afterPart(const SourceFrame& frame) const;
    void passOn(PacketPtr packet);

    const StopRequest& stop_;
    Messages& messages_;
    const std::string name_;  ///< Of the input.
    const bool strict_;
    std::optional<Interlacing> forcedInterlacing_;
    FrameRange range_;
    double start_ = -std::numeric_limits<double>::infinity();  ///< From the first frame, as `end_`.
    double end_ = std::numeric_limits<double>::infinity();

    std::unique_ptr<PipeIo> pipe_;
    InputFormatPtr input_;
    CodecContextPtr decoder_;
    int stream_ = -1;
    SourceInfo info_;
    VideoProperties video_;
    std::vector<std::int64_t> times_;
    bool seekable_ = false;  ///< By `times_`.
    ContinuousTimes continuous_;
    std::optional<std::int64_t> firstTime_;  ///< Of the clip's first frame.
    std::int64_t renderedTime_ = 0;
    FrameNumbering numbering_;
    std::int64_t announcedFrames_ = 0;  ///< By the container, where all of its packets are read.
    std::int64_t shownPackets_ = 0;

    double partStart_ = -std::numeric_limits<double>::infinity();
    double partEnd_ = std::numeric_limits<double>::infinity();
    double timeOrigin_ = 0;
    std::deque<std::unique_ptr<FfmpegFrame>> decoded_;  ///< Out of the decoder, or lost there.
    std::deque<std::unique_ptr<FfmpegFrame>> ahead_;    ///< Read while opening.
    std::int64_t nextTime_ = 0;                         ///< Of a frame without a time stamp.
    std::string failure_;                               ///< What the decoder said last.
    std::set<std::int64_t> brokenPackets_;              ///< Times of those that are there in part.
    std::string breakReason_;                           ///< Why the input ends early, where it does.
    PacketSink sink_;
    std::deque<PacketPtr> otherPackets_;  ///< Read before there was a sink.
    bool inputEnded_ = false;
    bool drained_ = false;
    bool done_ = false;
};

}  // namespace vireo

#endif
