// SPDX-License-Identifier: MIT
#include "app/media/output_clock.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <string_view>

namespace vireo {
namespace {

bool isMov(const AVOutputFormat& container) {
    constexpr std::string_view family[] = {"mp4", "mov", "3gp", "3g2", "ipod", "psp", "ismv", "f4v"};
    return std::find(std::begin(family), std::end(family), container.name) != std::end(family);
}

bool takesTimes(const AVCodec& codec, AVRational timeBase) {
    constexpr int mpeg4Finest = 65535;
    switch (codec.id) {
        case AV_CODEC_ID_MPEG1VIDEO:
        case AV_CODEC_ID_MPEG2VIDEO:
        case AV_CODEC_ID_THEORA:
        case AV_CODEC_ID_DNXHD:
        case AV_CODEC_ID_DVVIDEO: return false;
        case AV_CODEC_ID_MPEG4: return timeBase.den <= mpeg4Finest;
        default: return true;
    }
}

AVRational nearestRate(const AVCodec& codec, AVRational wanted) {
    if (codec.supported_framerates == nullptr) return wanted;
    return codec.supported_framerates[av_find_nearest_q_idx(wanted, codec.supported_framerates)];
}

/// The source's time base, refined where a clip of constant rate would not come out even.
AVRational evenTimeBase(const VideoProperties& video) {
    constexpr std::int64_t finest = 1'000'000;
    const AVRational ticks = av_div_q(av_inv_q(video.frameRate), video.timeBase);
    const std::int64_t common = std::lcm<std::int64_t>(video.timeBase.den, video.frameRate.num);
    if (ticks.den == 1 || common > finest) return video.timeBase;
    return {1, static_cast<int>(common)};
}

}  // namespace

OutputClock::Way OutputClock::wayOf(const AVOutputFormat& container, const AVCodec& codec,
                                    AVRational timeBase, bool counts) {
    // These are not marked as able to.
    if (isMov(container)) return Way::Beside;
    if ((container.flags & AVFMT_VARIABLE_FPS) == 0) return Way::Counted;
    return takesTimes(codec, timeBase) && !counts ? Way::Encoded : Way::Beside;
}

OutputClock::OutputClock(const AVOutputFormat& container, const AVCodec& codec, const VideoProperties& video,
                         bool counts, std::int64_t clipStart, double origin)
    : isMov_(isMov(container)),
      way_(wayOf(container, codec, video.timeBase, counts)),
      sourceBase_(video.timeBase),
      frameRate_(way_ == Way::Encoded ? video.frameRate : nearestRate(codec, video.frameRate)),
      timeBase_(way_ == Way::Counted ? av_inv_q(frameRate_)
                : isMov_             ? evenTimeBase(video)
                                     : video.timeBase),
      clipStart_(clipStart),
      sourceOrigin_(std::llround(origin / av_q2d(video.timeBase))) {
    firstCount_ = framesTo(sourceOrigin_);
    // A clip that begins by less than a frame after its sound begins with it.
    const double late = seconds(clipStart_ - sourceOrigin_, sourceBase_) * av_q2d(frameRate_);
    if (late > 0) firstCount_ = -static_cast<std::int64_t>(std::floor(late + sameTime));
}

AVRational OutputClock::encoderBase() const {
    return way_ == Way::Encoded ? timeBase_ : av_inv_q(frameRate_);
}

std::int64_t OutputClock::timeOf(std::int64_t sourceTime) const {
    if (way_ == Way::Counted) return countOf(sourceTime);
    if (av_cmp_q(timeBase_, sourceBase_) == 0) return sourceTime - sourceOrigin_;
    return rescaled(sourceTime) - rescaled(sourceOrigin_);
}

std::int64_t OutputClock::durationOf(std::int64_t sourceDuration) const {
    if (way_ == Way::Counted) return 1;
    const std::int64_t frame = av_rescale_q(1, av_inv_q(frameRate_), sourceBase_);
    const bool isUsual = isMov_ && (sourceDuration <= 0 || std::abs(sourceDuration - frame) <= 1);
    if (isUsual) return av_rescale_q(1, av_inv_q(frameRate_), timeBase_);
    return av_rescale_q(sourceDuration, sourceBase_, timeBase_);
}

std::int64_t OutputClock::enter(std::int64_t sourceTime, std::int64_t sourceDuration) {
    lastTime_ = std::max(lastTime_ + 1, timeOf(sourceTime));
    lastEntered_ = way_ == Way::Beside ? std::max(lastEntered_ + 1, countOf(sourceTime)) : lastTime_;
    frames_[lastEntered_] = {lastTime_, durationOf(sourceDuration)};
    return lastEntered_;
}

void OutputClock::leave(AVPacket& packet) {
    if (const auto frame = frames_.find(packet.pts); frame != frames_.end())
        packet.duration = frame->second.duration;
    if (way_ != Way::Beside) {
        frames_.erase(packet.pts);
        return;
    }
    packet.pts = timeAt(packet.pts);
    // What is decoded from here on is shown from here on.
    const auto done = frames_.upper_bound(packet.dts);
    packet.dts = timeAt(packet.dts);
    if (done != frames_.begin()) frames_.erase(frames_.begin(), std::prev(done));
}

/// Frames since the clip's first one, at the output's rate.
std::int64_t OutputClock::framesTo(std::int64_t sourceTime) const {
    return std::llround(seconds(sourceTime - clipStart_, sourceBase_) * av_q2d(frameRate_));
}

/// In the output's time base, not moved to its begin yet. Frames of a constant rate that the source's clock
/// rounded are even again.
std::int64_t OutputClock::rescaled(std::int64_t sourceTime) const {
    const std::int64_t sinceStart = sourceTime - clipStart_;
    const std::int64_t frame = av_rescale_q(sinceStart, sourceBase_, av_inv_q(frameRate_));
    if (av_rescale_q(frame, av_inv_q(frameRate_), sourceBase_) != sinceStart)
        return av_rescale_q(sourceTime, sourceBase_, timeBase_);
    return av_rescale_q(clipStart_, sourceBase_, timeBase_) +
           av_rescale_q(frame, av_inv_q(frameRate_), timeBase_);
}

/// When what the encoder calls so is shown; it also tells times between and before its frames.
std::int64_t OutputClock::timeAt(std::int64_t count) const {
    const std::int64_t frame = std::max<std::int64_t>(1, av_rescale_q(1, av_inv_q(frameRate_), timeBase_));
    const auto next = frames_.upper_bound(count);
    if (next == frames_.begin())
        return next == frames_.end() ? count * frame : next->second.time - (next->first - count) * frame;
    const auto& [known, shown] = *std::prev(next);
    const std::int64_t time = shown.time + (count - known) * frame;
    return next == frames_.end() ? time : std::min(time, next->second.time - 1);
}

}  // namespace vireo
