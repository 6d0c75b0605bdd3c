// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_INPUT_H
#define VIREO_APP_MEDIA_FFMPEG_INPUT_H

#include "app/media/continuous_times.h"
#include "app/media/ffmpeg_io.h"

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

namespace vireo {

inline constexpr double noTime = -std::numeric_limits<double>::infinity();

/// An open input: its streams, one of which is the video, and its packets in the order of the file.
class FfmpegInput {
public:
    /// A file or "-". Throws Error, also where it holds no video.
    FfmpegInput(const std::string& input, const StopRequest& stop);

    const std::string& name() const { return name_; }  ///< For sentences.
    const AVFormatContext& context() const { return *context_; }
    int videoStream() const { return video_; }
    const AVStream& video() const { return *context_->streams[video_]; }

    /// The rate of the video's frames; 25 where nothing tells.
    AVRational frameRate() const;
    AVRational pixelAspect(const AVFrame& frame) const;

    bool isPipe() const { return pipe_ != nullptr; }
    bool isSeekable() const;
    bool isBroadcast() const { return (context_->iformat->flags & AVFMT_TS_DISCONT) != 0; }

    /// The next packet, whatever its stream; null at the end.
    PacketPtr next();

    /// Goes on at a key frame of the video that is shown at `time` or before; the clip begins at `start`.
    void seek(std::int64_t time, std::int64_t start);

    /// When a packet begins, in seconds of the input's clock; noTime where it does not say.
    double timeOf(const AVPacket& packet) const;

    /// Why the input ends early, where it does.
    const std::string& breakReason() const { return breakReason_; }

private:
    const std::string name_;
    std::unique_ptr<PipeIo> pipe_;
    InputFormatPtr context_;
    int video_ = -1;
    ContinuousTimes continuous_;
    std::string breakReason_;
    bool ended_ = false;
};

}  // namespace vireo

#endif
