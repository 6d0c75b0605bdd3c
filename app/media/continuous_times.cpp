// SPDX-License-Identifier: MIT
#include "app/media/continuous_times.h"

#include <algorithm>

namespace vireo {
namespace {

constexpr std::int64_t untidy = 100'000;  // some files go back a little and on again
constexpr std::int64_t uneven = 10'000;
constexpr std::int64_t farthest = 10'000'000;

std::int64_t micros(std::int64_t time, const AVStream& stream) {
    return av_rescale_q(time, stream.time_base, AV_TIME_BASE_Q);
}

bool isDense(const AVStream& stream) {
    const AVMediaType type = stream.codecpar->codec_type;
    return type == AVMEDIA_TYPE_VIDEO || type == AVMEDIA_TYPE_AUDIO;
}

void move(AVPacket& packet, std::int64_t shift, const AVStream& stream) {
    if (shift == 0) return;
    const std::int64_t ticks = av_rescale_q(shift, AV_TIME_BASE_Q, stream.time_base);
    if (packet.dts != AV_NOPTS_VALUE) packet.dts += ticks;
    if (packet.pts != AV_NOPTS_VALUE) packet.pts += ticks;
}

}  // namespace

void ContinuousTimes::correct(AVPacket& packet, const AVFormatContext& input) {
    const AVStream& stream = *input.streams[packet.stream_index];
    if (!isDense(stream)) {
        const std::int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
        if (time != AV_NOPTS_VALUE) move(packet, nearestShift(micros(time, stream)), stream);
        return;
    }
    const bool isNew = !clocks_.contains(stream.index);
    Clock& clock = clocks_[stream.index];
    if (isNew) clock.shift = shift_;
    if (packet.dts != AV_NOPTS_VALUE) {
        const bool isFirst = clock.last == never;
        const std::int64_t decoded = micros(packet.dts, stream);
        const std::int64_t shown = packet.pts != AV_NOPTS_VALUE ? micros(packet.pts, stream) : decoded;
        const bool mayJump = (input.iformat->flags & AVFMT_TS_DISCONT) != 0;
        const std::int64_t time = decoded + clock.shift;
        const bool isVideo = stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
        // Sound goes on evenly up to where the others jumped.
        const bool meetsJump =
            mayJump && !isVideo && clock.shift != shift_ && std::abs(time - clock.end) > uneven;
        if (!isFirst && (time + untidy < clock.last || (mayJump && time > clock.end + farthest) || meetsJump))
            jump(clock, decoded, shown, isVideo, mayJump);
        const std::int64_t step = isFirst ? 0 : decoded + clock.shift - clock.last;
        const std::int64_t duration = packet.duration > 0             ? micros(packet.duration, stream)
                                      : !isFirst && step < 2 * untidy ? std::max<std::int64_t>(step, 0)
                                                                      : 0;
        clock.last = now_ = decoded + clock.shift;
        clock.end = clock.last + duration;
        clock.shownEnd = std::max(clock.shownEnd, shown + clock.shift + duration);
    }
    move(packet, clock.shift, stream);
}

void ContinuousTimes::jump(Clock& clock, std::int64_t decoded, std::int64_t shown, bool isVideo,
                           bool isTogether) {
    const std::int64_t behind = clock.end - decoded;
    const std::int64_t apart = decoded + shift_ - clock.end;
    if (clock.shift != shift_ && std::abs(apart) <= farthest) {
        // Sound may lie over what was there; pictures have to follow one another.
        if (isVideo && apart < 0) shift_ = behind;
    } else {
        earlierShift_ = shift_;
        shift_ = behind;
        for (const auto& [index, other] : clocks_) {
            if (isTogether && &other != &clock && other.shownEnd != never)
                shift_ = std::max(shift_, other.shownEnd - shown);
        }
    }
    clock.shift = shift_;
    clock.shownEnd = never;
}

std::int64_t ContinuousTimes::nearestShift(std::int64_t time) const {
    const auto apart = [&](std::int64_t shift) { return std::abs(time + shift - now_); };
    return apart(earlierShift_) < apart(shift_) ? earlierShift_ : shift_;
}

}  // namespace vireo
