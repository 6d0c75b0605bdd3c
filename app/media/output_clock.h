// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_OUTPUT_CLOCK_H
#define VIREO_APP_MEDIA_OUTPUT_CLOCK_H

#include "app/media/ffmpeg_frame.h"

#include <cstdint>
#include <map>

namespace vireo {

/// When the frames of an input are shown in an output's video, and what its encoder is told of that.
class OutputClock {
public:
    /// `counts` has the encoder count frames, whatever else it takes. `clipStart` is when the clip's first
    /// frame is shown, `origin` what is time 0 of the output in seconds; both are the input's.
    OutputClock(const AVOutputFormat& container, const AVCodec& codec, const VideoProperties& video,
                bool counts, std::int64_t clipStart, double origin);

    AVRational timeBase() const { return timeBase_; }  ///< Of the video.
    AVRational encoderBase() const;                    ///< Of what the encoder is given.
    AVRational frameRate() const { return frameRate_; }

    std::int64_t timeOf(std::int64_t sourceTime) const;
    std::int64_t durationOf(std::int64_t sourceDuration) const;

    /// The time that the encoder is given for a frame. Frames in order; none has a time twice.
    std::int64_t enter(std::int64_t sourceTime, std::int64_t sourceDuration);

    /// Gives a packet of the encoder the times of the output.
    void leave(AVPacket& packet);

private:
    /// How the frames' times reach the output.
    enum class Way {
        Counted,  ///< The container has none of its own.
        Encoded,  ///< Through the encoder.
        Beside,   ///< The encoder counts frames, as all of them can.
    };
    struct Frame {
        std::int64_t time, duration;
    };

    static Way wayOf(const AVOutputFormat& container, const AVCodec& codec, AVRational timeBase, bool counts);
    std::int64_t framesTo(std::int64_t sourceTime) const;
    std::int64_t countOf(std::int64_t sourceTime) const { return framesTo(sourceTime) - firstCount_; }
    std::int64_t rescaled(std::int64_t sourceTime) const;
    std::int64_t timeAt(std::int64_t count) const;

    bool isMov_;  ///< Its last frame needs a duration.
    Way way_;
    AVRational sourceBase_;
    AVRational frameRate_;
    AVRational timeBase_;
    std::int64_t clipStart_;
    std::int64_t sourceOrigin_;
    std::int64_t firstCount_ = 0;
    std::int64_t lastEntered_ = std::numeric_limits<std::int64_t>::min();
    std::int64_t lastTime_ = std::numeric_limits<std::int64_t>::min();
    std::map<std::int64_t, Frame> frames_;  ///< Of those in the encoder, by what it was given.
};

}  // namespace vireo

#endif
