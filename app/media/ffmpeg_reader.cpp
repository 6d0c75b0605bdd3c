// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_reader.h"

#include "app/media/pixel_format.h"
#include "engine/error.h"

#include <cmath>

namespace vireo {

FfmpegReader::FfmpegReader(const RenderJob& job, int lookBack, const StopRequest& stop, Messages& messages)
    : stop_(stop),
      messages_(messages),
      strict_(job.strict),
      range_(job.frames.value_or(FrameRange{})),
      input_(job.input, job.policy, stop),
      others_(input_),
      decoder_(
          input_, job.interlacing, [this] { return nextVideoPacket(); }, stop),
      prepared_(decoder_, input_, job, messages),
      clip_(prepared_.setClip(indexClip(input_, job, stop))) {
    if (job.start) start_ = *job.start;
    if (job.duration && !job.frames) end_ = std::max(0.0, job.start.value_or(0)) + *job.duration;
    prepared_.setLastWanted(range_.last);
    seekToPart(job, lookBack);
    readToPart(job, lookBack);
    describe(job);
}

void FfmpegReader::seekToPart(const RenderJob& job, int lookBack) {
    if (!clip_.isSeekable || !(job.frames || job.start)) return;
    const std::int64_t first = job.start ? clip_.framesBefore(start_) : range_.first;
    const std::int64_t wanted = std::min(first, static_cast<std::int64_t>(clip_.times.size()) - 1) - lookBack;
    if (wanted <= 0) return;
    // Parts join because all of them are written with what the clip's first frame says.
    prepared_.next();
    prepared_.restart();
    others_.clear();
    input_.seek(prepared_.sourceTimeFor(wanted), prepared_.sourceTimeFor(0));
}

void FfmpegReader::readToPart(const RenderJob& job, int lookBack) {
    constexpr double interleaving = 1;  // seconds by which sound may lie behind
    std::unique_ptr<FfmpegFrame> frame = prepared_.next();
    while (frame != nullptr && (video().width == 0 || beforePart(*frame))) {
        frame->preRoll = beforePart(*frame);
        // Sound that lies behind cannot belong to the part; its start is not known yet.
        if (frame->preRoll) others_.clearBefore(timeOf(*frame) - interleaving);
        ahead_.push_back(std::move(frame));
        if (ahead_.front()->preRoll && static_cast<int>(ahead_.size()) > lookBack) ahead_.pop_front();
        frame = prepared_.next();
    }
    throwIfInterrupted();
    if (video().width == 0)
        throw Error(input_.name() + ": no frame can be read: " +
                    (decoder_.failure().empty() ? failureText(AVERROR_INVALIDDATA) : decoder_.failure()));
    // Frames and seconds meet where the part begins.
    if (frame != nullptr && job.durationFrames) {
        range_.last = lastOf(frame->position.number, *job.durationFrames);
        prepared_.setLastWanted(range_.last);
    }
    if (frame != nullptr && job.duration && job.frames) end_ = frame->position.seconds + *job.duration;
    if (frame == nullptr || afterPart(*frame)) {
        throw Error(input_.name() + " has no frame in the range asked for" +
                    (clip_.frameCount > 0 ? ": its frames are 0 to " + std::to_string(clip_.frameCount - 1)
                                          : std::string()));
    }
    settlePart(*frame);
    ahead_.push_back(std::move(frame));
}

void FfmpegReader::settlePart(const FfmpegFrame& first) {
    info_.firstFrame = first.position.number;
    renderedTime_ = first.properties().pts;
    const double clipStart = seconds(prepared_.firstTime(), clip_.timeBase);
    if (range_.last) {
        const std::size_t next = static_cast<std::size_t>(*range_.last) + 1;
        if (clip_.times.empty()) partEnd_ = clipStart + static_cast<double>(next) / av_q2d(video().frameRate);
        if (next < clip_.times.size()) partEnd_ = seconds(clip_.times[next], clip_.timeBase);
    }
    partEnd_ = std::min(partEnd_, clipStart + end_);
    if (range_.first > 0 || start_ > 0) {
        partStart_ = timeOf(first);
        timeOrigin_ = partStart_;
    } else if (input_.isBroadcast() && input().start_time != AV_NOPTS_VALUE) {
        // Clocks of broadcasts begin anywhere.
        timeOrigin_ = seconds(input().start_time, AV_TIME_BASE_Q);
    }
    others_.limit(partStart_, partEnd_);
}

void FfmpegReader::describe(const RenderJob& job) {
    info_.width = video().uprightWidth();
    info_.height = video().uprightHeight();
    info_.depth = formatDepth(video().format);
    info_.alpha = formatHasAlpha(video().format);
    info_.frameCount = clip_.frameCount;
    info_.frameRate = av_q2d(video().frameRate);
    prepared_.setPremultiplied(job.premultiplied && info_.alpha);
    prepared_.setDithers(job.dithers);

    constexpr double endless = std::numeric_limits<double>::infinity();
    constexpr double mostFrames = 1e15;
    if (clip_.frameCount > 0) noteEnd(clip_.frameCount - 1);
    const double last = std::min({clip_.frameCount > 0 ? static_cast<double>(clip_.frameCount - 1) : endless,
                                  range_.last ? static_cast<double>(*range_.last) : endless,
                                  clip_.times.empty() ? std::ceil(end_ * info_.frameRate - sameTime) - 1
                                                      : static_cast<double>(clip_.framesBefore(end_) - 1)});
    if (last < mostFrames)
        info_.framesExpected = std::max<std::int64_t>(0, std::llround(last) - info_.firstFrame + 1);
}

/// Says where the input ends when that is inside the range asked for.
void FfmpegReader::noteEnd(std::int64_t last) {
    if (!range_.last || *range_.last <= last) return;
    messages_.notice(MessageCode::RangeShortened, input_.name() + " ends with frame " + std::to_string(last) +
                                                      "; what exists of the range is rendered");
}

/// Says behind which frame the input breaks off, where it does and no lost frames say it.
void FfmpegReader::noteBreak() {
    if (input_.breakReason().empty() || decoder_.wasCutShort() || stop_.requested()) return;
    const std::string what = input_.name() + ": the file breaks off behind frame " +
                             std::to_string(prepared_.following() - 1) + ": " + input_.breakReason();
    if (strict_) throw Error(what);
    messages_.warning(MessageCode::FileBreaksOff, what);
}

std::unique_ptr<SourceFrame> FfmpegReader::read() {
    std::unique_ptr<FfmpegFrame> frame;
    if (!ahead_.empty()) {
        frame = std::move(ahead_.front());
        ahead_.pop_front();
    } else if (!done_) {
        frame = prepared_.next();
        if (frame == nullptr && clip_.frameCount == 0 && !stop_.requested())
            noteEnd(prepared_.following() - 1);
        if (frame == nullptr || afterPart(*frame)) {
            frame.reset();
            done_ = true;
            passOthersToEnd();
            noteBreak();
        }
    }
    return frame;
}

/// Null at the end.
PacketPtr FfmpegReader::nextVideoPacket() {
    PacketPtr packet = input_.next();
    while (packet != nullptr && packet->stream_index != input_.videoStream()) {
        others_.take(std::move(packet));
        packet = input_.next();
    }
    return packet;
}

void FfmpegReader::passOthers(double until) {
    while (!stop_.requested()) {
        PacketPtr packet = input_.next();
        if (packet == nullptr) return;
        const double time = input_.timeOf(*packet);
        if (packet->stream_index != input_.videoStream()) others_.take(std::move(packet));
        if (time > until) return;
    }
}

void FfmpegReader::passOthersToEnd() {
    constexpr double interleaving = 2;  // seconds by which streams of a file may lie apart
    passOthers(partEnd_ + interleaving);
}

bool FfmpegReader::beforePart(const SourceFrame& frame) const {
    return frame.position.number < range_.first || frame.position.seconds < start_ - sameTime;
}

bool FfmpegReader::afterPart(const SourceFrame& frame) const {
    return (range_.last && frame.position.number > *range_.last) || frame.position.seconds >= end_ - sameTime;
}

}  // namespace vireo
