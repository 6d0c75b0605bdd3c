// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_VIDEO_DECODER_H
#define VIREO_APP_MEDIA_VIDEO_DECODER_H

#include "app/media/clip_index.h"
#include "app/media/decoder_complaints.h"
#include "app/media/ffmpeg_frame.h"
#include "app/media/frame_numbering.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vireo {

/// Makes numbered frames of the video's packets. A frame that is lost or was never there comes out in its
/// place, without pixels.
class VideoDecoder {
public:
    /// Gives the video's next packet; null at the end.
    using PacketSource = std::function<PacketPtr()>;

    /// The input outlives the decoder, the decoder its frames. Throws Error.
    VideoDecoder(const FfmpegInput& input, std::optional<Interlacing> forcedInterlacing,
                 PacketSource nextPacket, const StopRequest& stop);

    /// To be called before the first frame is decoded.
    void setClip(const ClipIndex& clip);

    /// Frames that are missing behind this one are not asked for.
    void setLastWanted(std::optional<std::int64_t> frame) { lastWanted_ = frame; }

    void setPremultiplied(bool premultiplied) { video_.premultiplied = premultiplied; }
    void setDithers(bool dithers) { video_.dithers = dithers; }

    /// The next frame; null behind the last one and when a stop is requested.
    std::unique_ptr<FfmpegFrame> next();

    /// Forgets all frames but what the first one said of the video: the input is read from elsewhere.
    void restart();

    /// What the first frame said, a width of 0 before.
    const VideoProperties& video() const { return video_; }

    /// When the clip's first frame is shown; known once a frame is.
    std::int64_t firstTime() const { return *firstTime_; }

    /// The number behind the last frame's.
    std::int64_t following() const { return numbering_.following(); }

    /// Why a frame could not be decoded last; empty where all could.
    const std::string& failure() const { return failure_; }

    /// Whether frames that the container announces are missing at the end, and came out as lost.
    bool wasCutShort() const { return cutShort_; }

private:
    void feed();
    bool breaksOff(const AVPacket& packet) const;
    void noteFailure(int code);
    void take(FramePtr frame);
    void takeLost(const std::vector<FrameNumbering::Lost>& lost);
    void takeMissing();
    void takeNextMissing();
    void setProperties(const AVFrame& frame);
    Interlacing interlacingOf(const AVFrame& frame) const;
    std::int64_t usualDuration() const;
    void place(SourceFrame& frame, std::int64_t number, std::int64_t time, Interlacing interlacing) const;

    const FfmpegInput& input_;
    const std::optional<Interlacing> forcedInterlacing_;
    const PacketSource nextPacket_;
    const StopRequest& stop_;
    DecoderComplaints complaints_;
    CodecContextPtr decoder_;
    VideoProperties video_;
    ClipIndex clip_;
    std::optional<std::int64_t> lastWanted_;
    std::optional<std::int64_t> firstTime_;
    FrameNumbering numbering_;
    std::deque<std::unique_ptr<FfmpegFrame>> decoded_;  ///< Out of the decoder, or lost there.
    std::int64_t shownPackets_ = 0;
    std::int64_t nextTime_ = 0;             ///< Of a frame without a time stamp.
    std::string failure_;                   ///< What the decoder said last.
    std::set<std::int64_t> brokenPackets_;  ///< Times of those that are there in part.
    bool drained_ = false;
    std::optional<std::int64_t> missing_;  ///< The next frame that was announced and is not there.
    bool cutShort_ = false;
};

}  // namespace vireo

#endif
