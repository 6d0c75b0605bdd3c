// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_INPUT_H
#define VIREO_APP_MEDIA_FFMPEG_INPUT_H

#include "app/media/continuous_times.h"
#include "app/media/guarded_input.h"

#include <cstdint>
#include <limits>
#include <set>
#include <string>

namespace vireo {

inline constexpr double noTime = -std::numeric_limits<double>::infinity();

/// An open input: its streams, one of which is the video, and its packets in the order of the file.
class FfmpegInput {
public:
    /// A file or "-". Throws Error, also where it holds no video.
    FfmpegInput(const std::string& input, const InputPolicy& policy, const StopRequest& stop);

    const std::string& name() const { return file_.name(); }  ///< For sentences.
    const AVFormatContext& context() const { return file_.context(); }
    int videoStream() const { return video_; }
    const AVStream& video() const { return *context().streams[video_]; }

    /// The rate of the video's frames; 25 where nothing tells.
    AVRational frameRate() const;
    AVRational pixelAspect(const AVFrame& frame) const;

    const InputPolicy& policy() const { return file_.policy(); }
    bool isPipe() const { return file_.isPipe(); }
    bool isSeekable() const { return file_.isSeekable(); }
    bool isBroadcast() const { return (context().iformat->flags & AVFMT_TS_DISCONT) != 0; }

    /// Whether it is a file of pictures, mostly one, rather than a clip.
    bool isPicture() const;

    /// The next packet, whatever its stream; null at the end.
    PacketPtr next();

    /// Goes on at a key frame of the video that is shown at `time` or before; the clip begins at `start`.
    void seek(std::int64_t time, std::int64_t start);

    /// When a packet begins, in seconds of the input's clock; noTime where it does not say.
    double timeOf(const AVPacket& packet) const;

    /// Why the input ends early, where it does.
    const std::string& breakReason() const { return breakReason_; }

private:
    void note(const AVPacket& packet);
    std::string earlyEnd() const;

    GuardedInput file_;
    int video_ = -1;
    ContinuousTimes continuous_;
    std::string breakReason_;
    std::int64_t lastEnd_ = -1;   ///< Of the last packet of the video, in the file.
    std::set<int> corruptAtEnd_;  ///< Streams whose last packet is there in part.
    bool ended_ = false;
};

}  // namespace vireo

#endif
