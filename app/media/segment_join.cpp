// SPDX-License-Identifier: MIT
#include "app/media/segment_join.h"

#include "app/base/files.h"
#include "app/media/encoder_choice.h"
#include "app/media/ffmpeg_source.h"
#include "app/media/ffmpeg_writer.h"
#include "app/media/packet_index.h"
#include "engine/error.h"

#include <algorithm>
#include <cstring>
#include <numeric>

namespace vireo {
namespace {

/// The file of a segment, and which frames of the clip its packets hold.
struct OpenSegment {
    std::unique_ptr<GuardedInput> input;
    int stream = -1;
    std::vector<std::int64_t> times;    ///< Of its packets in the order in which they are shown; empty where
                                        ///< they are shown as they are stored.
    std::vector<std::int64_t> numbers;  ///< Of its frames, in the order in which they are shown.
    std::string file;

    const AVStream& video() const { return *input->context().streams[stream]; }
};

std::string frameNames(const Segment& segment) {
    return "frames " + std::to_string(segment.first) + " to " + std::to_string(segment.last);
}

/// The frames of a part that the input still holds.
std::vector<std::int64_t> readableFrames(RenderJob job, const FrameProcessor& processor,
                                         const Segment& segment, const StopRequest& stop) {
    Messages silent(true);
    job.frames = FrameRange{segment.first, segment.last};
    job.start = job.duration = std::nullopt;
    job.durationFrames = std::nullopt;
    const FfmpegSource source = openSource(job, processor, stop, silent);
    if (source.container != nullptr) source.container->connect([](PacketPtr) {});
    std::vector<std::int64_t> numbers;
    while (const auto frame = source.reader->read()) {
        if (frame->preRoll) continue;
        try {
            frame->picture(source.pictureFormat);
            numbers.push_back(frame->position.number);
        } catch (const DamagedFrame&) {
            // Is what is looked for.
        }
    }
    return numbers;
}

/// Opens segments and finds out which frames they hold.
class SegmentOpener {
public:
    SegmentOpener(const RenderJob& job, const FrameProcessor& processor, const StopRequest& stop,
                  Messages& messages)
        : job_(job), processor_(processor), stop_(stop), messages_(messages) {}

    OpenSegment open(const Segment& segment) const {
        OpenSegment open;
        open.file = segment.file;
        std::error_code error;
        if (!std::filesystem::exists(pathOf(segment.file), error))
            throw Error(frameNames(segment) + " are missing: there is no " + segment.file);
        open.input = std::make_unique<GuardedInput>(segment.file, job_.policy, &stop_);
        check(open.input->findStreams(), "cannot read " + segment.file);
        open.stream = av_find_best_stream(&open.input->context(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        if (open.stream < 0) throw Error(segment.file + " holds no video");
        PacketIndex index = indexPackets(segment.file, job_.policy, open.stream, stop_);
        throwIfInterrupted();
        open.times = std::move(index.times);
        numberFrames(open, segment, index.count);
        return open;
    }

private:
    void numberFrames(OpenSegment& open, const Segment& segment, std::int64_t count) const {
        const std::int64_t wanted = segment.last - segment.first + 1;
        open.numbers.resize(static_cast<std::size_t>(wanted));
        std::iota(open.numbers.begin(), open.numbers.end(), segment.first);
        if (count == wanted) return;
        // Damaged frames of the input were left out; anything else would be a hole.
        if (count < wanted) open.numbers = readableFrames(job_, processor_, segment, stop_);
        if (static_cast<std::int64_t>(open.numbers.size()) != count) {
            throw Error(segment.file + " holds " + std::to_string(count) + " frames and not the " +
                        std::to_string(wanted) + " of " + frameNames(segment) +
                        ": remove it and run its line again");
        }
        messages_.warning(MessageCode::FramesLost,
                          job_.input + ": damaged and left out: " + std::to_string(wanted - count) + " of " +
                              frameNames(segment));
    }

    const RenderJob& job_;
    const FrameProcessor& processor_;
    const StopRequest& stop_;
    Messages& messages_;
};

void refuseOtherSettings(const OpenSegment& first, const OpenSegment& other) {
    const AVCodecParameters& a = *first.video().codecpar;
    const AVCodecParameters& b = *other.video().codecpar;
    const bool same = a.codec_id == b.codec_id && a.width == b.width && a.height == b.height &&
                      a.format == b.format && a.extradata_size == b.extradata_size &&
                      (a.extradata_size == 0 || std::memcmp(a.extradata, b.extradata,
                                                            static_cast<std::size_t>(a.extradata_size)) == 0);
    if (!same)
        throw Error(other.file + " was encoded differently from " + first.file +
                    " and cannot be joined to it");
}

/// The times of a clip's frames in its clock.
class FrameClock {
public:
    FrameClock(const FfmpegSource& source) : video_(source.video) {
        firstFrame_ = source.reader->info().firstFrame;
        firstTime_ = firstFrame_;
        if (source.container == nullptr) return;
        times_ = source.container->frameTimes();
        firstTime_ = source.container->firstTimeRendered();
    }

    std::int64_t timeOf(std::int64_t frame) const {
        if (frame < static_cast<std::int64_t>(times_.size())) return times_[static_cast<std::size_t>(frame)];
        return firstTime_ + av_rescale_q(frame - firstFrame_, av_inv_q(video_.frameRate), video_.timeBase);
    }

private:
    const VideoProperties& video_;
    std::vector<std::int64_t> times_;
    std::int64_t firstFrame_, firstTime_;
};

/// Packets of all segments, one after another, with the times of one output.
class JoinedVideo {
public:
    JoinedVideo(std::vector<OpenSegment>& segments, const FrameClock& clock, const FfmpegWriter& writer)
        : segments_(segments), base_(writer.timeBase()) {
        for (const OpenSegment& segment : segments) {
            for (std::int64_t number : segment.numbers) {
                std::int64_t time = writer.timeOf(clock.timeOf(number));
                // As an encoder is given them: no time twice.
                if (!times_.empty()) time = std::max(time, times_.back() + 1);
                times_.push_back(time);
            }
        }
        for (const OpenSegment& segment : segments)
            delay_ = std::max(delay_, static_cast<std::size_t>(segment.video().codecpar->video_delay));
    }

    /// Null after the last.
    PacketPtr next() {
        while (segment_ < segments_.size()) {
            OpenSegment& segment = segments_[segment_];
            PacketPtr packet = newPacket();
            const int got = av_read_frame(&segment.input->context(), packet.get());
            if (got == AVERROR_EOF) {
                shownBefore_ += segment.numbers.size();
                storedInSegment_ = 0;
                segment.input.reset();
                ++segment_;
                continue;
            }
            throwIfInterrupted();
            check(got, "cannot read " + segment.file);
            if (packet->stream_index != segment.stream) continue;
            place(*packet, segment);
            return packet;
        }
        return nullptr;
    }

private:
    std::size_t rankOf(const AVPacket& packet, const OpenSegment& segment, std::size_t stored) const {
        const std::size_t last = segment.numbers.size() - 1;
        if (segment.times.empty()) return std::min(stored, last);
        const auto found = std::lower_bound(segment.times.begin(), segment.times.end(), packet.pts);
        return std::min(static_cast<std::size_t>(found - segment.times.begin()), last);
    }

    /// Decoding times are the shown ones, as much earlier as the order differs.
    std::int64_t decodingTime(std::size_t stored) const {
        if (stored >= delay_) return times_[std::min(stored - delay_, times_.size() - 1)];
        const std::size_t first = std::min(delay_, times_.size() - 1);
        return times_[std::min(stored, first)] - (times_[first] - times_[0]) -
               static_cast<std::int64_t>(delay_ - first);
    }

    void place(AVPacket& packet, const OpenSegment& segment) {
        packet.pos = -1;
        if (!holdsShownFrame(packet, segment.video().codecpar->codec_id)) {
            // Right behind the frame before.
            const std::size_t next = std::min(shownBefore_ + storedInSegment_, times_.size() - 1);
            packet.pts = packet.dts = next > 0 ? std::min(times_[next - 1] + 1, times_[next]) : times_[0];
            packet.duration = 0;
            return;
        }
        const std::size_t shown = shownBefore_ + rankOf(packet, segment, storedInSegment_);
        const std::size_t stored = shownBefore_ + storedInSegment_++;
        if (shown + 1 < times_.size()) {
            packet.duration = times_[shown + 1] - times_[shown];
        } else {
            packet.duration = av_rescale_q(packet.duration, segment.video().time_base, base_);
        }
        packet.pts = times_[shown];
        packet.dts = std::min(decodingTime(stored), packet.pts);
    }

    std::vector<OpenSegment>& segments_;
    AVRational base_;
    std::vector<std::int64_t> times_;  ///< Of all frames in the order in which they are shown.
    std::size_t delay_ = 0;            ///< By how many frames a packet may be stored behind its place.
    std::size_t segment_ = 0, shownBefore_ = 0, storedInSegment_ = 0;
};

/// The whole clip as a part of itself, whose frames are counted and their times looked up.
RenderJob withKnownFrames(RenderJob job) {
    if (job.frames || job.start) return job;
    if (job.duration) {
        job.start = 0;
    } else {
        job.frames = FrameRange{};
    }
    return job;
}

}  // namespace

ClipPart partOf(const RenderJob& job, const FrameProcessor& processor) {
    const InterruptionGuard guard;
    const StopRequest stop;
    Messages messages(job.quiet);
    const FfmpegSource source = openSource(withKnownFrames(job), processor, stop, messages);
    if (!writesPictures(job) &&
        chooseVideoEncoder(job, source.video, source.depth).codec->id == AV_CODEC_ID_WRAPPED_AVFRAME)
        throw Error(Fault::Usage, job.output + " would hold bare frames, which cannot be joined");
    const SourceInfo& info = source.reader->info();
    if (info.framesExpected == 0)
        throw Error("the frames of " + job.input + " cannot be counted; --clip-length tells how many");
    return {info.firstFrame, info.framesExpected, job.startNumber.value_or(source.firstNumber),
            info.frameRate};
}

std::int64_t joinSegments(const RenderJob& job, const FrameProcessor& processor,
                          const std::vector<Segment>& segments, Messages& messages) {
    const InterruptionGuard guard;
    StopRequest stop;
    const RenderJob known = withKnownFrames(job);
    const FfmpegSource source = openSource(known, processor, stop, messages);
    const SegmentOpener opener(job, processor, stop, messages);
    std::vector<OpenSegment> opened;
    for (const Segment& segment : segments) {
        opened.push_back(opener.open(segment));
        refuseOtherSettings(opened.front(), opened.back());
    }

    FfmpegWriter writer(known, source.container, source.video, source.depth, stop, messages,
                        opened.front().video().codecpar);
    const FrameClock clock(source);
    JoinedVideo video(opened, clock, writer);
    std::int64_t frames = 0;
    for (const OpenSegment& segment : opened) frames += static_cast<std::int64_t>(segment.numbers.size());
    const double origin = source.container != nullptr ? source.container->timeOrigin() : 0;
    while (PacketPtr packet = video.next()) {
        throwIfInterrupted();
        if (source.container != nullptr)
            source.container->passOthers(seconds(packet->dts, writer.timeBase()) + origin);
        writer.writeEncoded(std::move(packet));
    }
    if (source.container != nullptr) source.container->passOthersToEnd();
    writer.finish();
    writer.appear();
    return frames;
}

}  // namespace vireo
