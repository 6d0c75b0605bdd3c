// SPDX-License-Identifier: MIT
#include "app/media/prepared_video.h"

#include "engine/error.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace vireo {
namespace {

std::optional<AVRational> rateOf(const Preparation& preparation, const FfmpegInput& input) {
    if (!preparation.rate || input.isPicture()) return std::nullopt;
    AVRational rate{};
    av_reduce(&rate.num, &rate.den, preparation.rate->numerator, preparation.rate->denominator,
              std::numeric_limits<int>::max());
    return rate;
}

/// One in which both the source's times and the frames at a rate are whole.
AVRational commonTimeBase(AVRational source, AVRational rate) {
    constexpr std::int64_t finest = 1'000'000'000;
    const std::int64_t common = std::lcm<std::int64_t>(source.den, rate.num);
    return common <= finest ? AVRational{1, static_cast<int>(common)} : AV_TIME_BASE_Q;
}

}  // namespace

PreparedVideo::PreparedVideo(VideoDecoder& decoder, const FfmpegInput& input, const RenderJob& job,
                             Messages& messages)
    : decoder_(decoder),
      input_(input),
      messages_(messages),
      preparation_(job.preparation),
      rate_(rateOf(job.preparation, input)),
      isPassedOn_(!rate_ && !preparation_.changesPictures()) {}

ClipIndex PreparedVideo::setClip(const ClipIndex& source) {
    decoder_.setClip(source);
    source_ = clip_ = source;
    timeBase_ = source.timeBase;
    if (!rate_) return clip_;
    timeBase_ = commonTimeBase(source.timeBase, *rate_);
    clip_.timeBase = timeBase_;
    clip_.announcedFrames = 0;
    clip_.times.clear();
    if (source.times.empty()) {
        clip_.frameCount = av_rescale_q(source.frameCount, av_inv_q(input_.frameRate()), av_inv_q(*rate_));
        return clip_;
    }
    const std::int64_t usual = av_rescale_q(1, av_inv_q(input_.frameRate()), source.timeBase);
    const std::int64_t last = source.lastDuration > 0 ? source.lastDuration : usual;
    clip_.frameCount = countUpTo(source.times.back() + last - source.times.front());
    constexpr std::int64_t mostFrames = 1 << 25;
    if (clip_.frameCount > mostFrames) {
        throw Error(input_.name() + " has " + std::to_string(clip_.frameCount) +
                    " frames at that rate, more than " + std::to_string(mostFrames));
    }
    const std::int64_t first = av_rescale_q(source.times.front(), source.timeBase, timeBase_);
    for (std::int64_t frame = 0; frame < clip_.frameCount; ++frame)
        clip_.times.push_back(first + av_rescale_q(frame, av_inv_q(*rate_), timeBase_));
    return clip_;
}

std::unique_ptr<FfmpegFrame> PreparedVideo::next() {
    if (isPassedOn_) return decoder_.next();
    while (ready_.empty() && advance()) {
    }
    if (ready_.empty()) return nullptr;
    std::unique_ptr<FfmpegFrame> frame = std::move(ready_.front());
    ready_.pop_front();
    return frame;
}

/// One frame out of the graph or, where it has none, one more into it; a pause at a rate, or a graph that
/// ends, may give more frames than memory holds. False behind the last one.
bool PreparedVideo::advance() {
    if (FramePtr frame = graph_ ? graph_->pull() : nullptr) {
        if (rate_) {
            emitAtRate(std::move(frame));
        } else {
            emit(std::move(frame));
        }
    } else if (isEmptying_) {
        isEmptying_ = false;
        graph_.reset();
        emitLost();
        if (waiting_ != nullptr) push(*std::exchange(waiting_, nullptr));
    } else if (std::unique_ptr<FfmpegFrame> next = ended_ ? nullptr : decoder_.next()) {
        enter(std::move(next));
    } else if (!ended_) {
        ended_ = true;
        if (rate_ && clip_.frameCount == 0) clip_.frameCount = countUpTo(end_);
        // As many frames as were counted.
        if (rate_) {
            end_ = std::max(
                end_, av_rescale_q_rnd(clip_.frameCount, av_inv_q(*rate_), source_.timeBase, AV_ROUND_UP));
        }
        end(end_);
    } else {
        return false;
    }
    return true;
}

void PreparedVideo::restart() {
    decoder_.restart();
    graph_.reset();
    isEmptying_ = false;
    waiting_.reset();
    entered_.clear();
    ready_.clear();
    impaired_.clear();
    lastNumber_ = -1;
    ended_ = false;
}

std::int64_t PreparedVideo::sourceTimeFor(std::int64_t frame) const {
    constexpr std::int64_t fieldsBefore = 2;  // frames that deinterlacing looks at
    std::int64_t source = frame;
    if (rate_) {
        const auto later = std::partition_point(source_.times.begin(), source_.times.end(), [&](auto time) {
            return numberAt(time - source_.times.front()) <= frame;
        });
        source = later - source_.times.begin() - 1;
    }
    if (preparation_.deinterlace) source -= fieldsBefore;
    return source_.times[static_cast<std::size_t>(std::max<std::int64_t>(0, source))];
}

void PreparedVideo::setPremultiplied(bool premultiplied) {
    decoder_.setPremultiplied(premultiplied);
    video_.premultiplied = premultiplied;
}

void PreparedVideo::setDithers(bool dithers) {
    decoder_.setDithers(dithers);
    video_.dithers = dithers;
}

std::int64_t PreparedVideo::firstTime() const {
    return av_rescale_q(decoder_.firstTime(), source_.timeBase, timeBase_);
}

/// `sourceTime` is counted from the first frame.
std::int64_t PreparedVideo::numberAt(std::int64_t sourceTime) const {
    return av_rescale_q(sourceTime, source_.timeBase, av_inv_q(*rate_));
}

std::int64_t PreparedVideo::countUpTo(std::int64_t end) const {
    return std::max<std::int64_t>(1, numberAt(end));
}

void PreparedVideo::enter(std::unique_ptr<FfmpegFrame> frame) {
    const std::int64_t time = frame->properties().pts - decoder_.firstTime();
    std::int64_t duration = frame->properties().pkt_duration;
    if (duration <= 0) duration = av_rescale_q(1, av_inv_q(input_.frameRate()), source_.timeBase);
    end_ = std::max(end_, time + duration);

    auto* const decoded = dynamic_cast<DecodedFrame*>(frame.get());
    if (decoded == nullptr) {
        if (rate_) {
            impaired_.push_back({numberAt(time), numberAt(time + duration)});
        } else {
            entered_.push_back({std::move(frame), {}});
            if (entered_.size() == 1) emitLost();
        }
        return;
    }
    if (graph_ && graph_->takes(decoded->properties())) {
        push(*decoded);
    } else {
        (void)frame.release();
        waiting_.reset(decoded);
        end(time);
    }
}

void PreparedVideo::push(DecodedFrame& frame) {
    FramePtr pixels = frame.takePixels();
    if (!graph_) build(*pixels);
    if (!rate_) entered_.push_back({nullptr, frame.position, pixels->pts, pixels->pkt_duration});
    if (frame.impaired) pixels->flags |= AV_FRAME_FLAG_CORRUPT;
    pixels->pts -= decoder_.firstTime();
    graph_->push(std::move(pixels));
}

void PreparedVideo::build(const AVFrame& first) {
    const VideoProperties& source = decoder_.video();
    const bool isFirst = !plan_;
    if (isFirst) {
        Preparation preparation = preparation_;
        preparation.rate.reset();
        if (rate_) preparation.rate = Ratio{rate_->num, rate_->den};
        plan_ = planGraph(preparation, source, input_.name());
        if (!plan_->note.empty())
            messages_.notice(MessageCode::PreparationAdjusted, input_.name() + ": " + plan_->note);
    }
    graph_.emplace(*plan_, first, source, source_.timeBase);
    if (!isFirst) return;
    video_ = graph_->outputOf(source);
    if (preparation_.deinterlace) video_.interlacing = Interlacing::Progressive;
    video_.timeBase = timeBase_;
    if (rate_) video_.frameRate = *rate_;
}

/// Has the graph give what it still holds.
void PreparedVideo::end(std::int64_t time) {
    if (graph_) graph_->end(time);
    isEmptying_ = true;
}

void PreparedVideo::emit(FramePtr frame) {
    const Entered entered = std::move(entered_.front());
    entered_.pop_front();
    frame->pts = entered.time;
    frame->pkt_duration = entered.duration;
    FramePosition position = entered.position;
    if (preparation_.deinterlace) position.interlacing = Interlacing::Progressive;
    add(std::move(frame), position);
    emitLost();
}

void PreparedVideo::emitAtRate(FramePtr frame) {
    const std::int64_t number = frame->pts;
    const bool isKnown = clip_.frameCount > 0 && ended_;
    if (number <= lastNumber_ || (isKnown && number >= clip_.frameCount)) return;
    lastNumber_ = number;
    while (!impaired_.empty() && impaired_.front().end <= number) impaired_.pop_front();
    if (!impaired_.empty() && impaired_.front().begin <= number) frame->flags |= AV_FRAME_FLAG_CORRUPT;
    const AVRational step = av_inv_q(*rate_);
    frame->pts = firstTime() + av_rescale_q(number, step, timeBase_);
    frame->pkt_duration = av_rescale_q(1, step, timeBase_);
    const Interlacing interlacing = preparation_.deinterlace
                                        ? Interlacing::Progressive
                                        : uprightInterlacing(markedInterlacing(*frame), decoder_.video());
    add(std::move(frame),
        {number, clip_.frameCount, av_q2d(step) * static_cast<double>(number), av_q2d(*rate_), interlacing});
}

void PreparedVideo::emitLost() {
    for (; !entered_.empty() && entered_.front().lost != nullptr; entered_.pop_front())
        ready_.push_back(std::move(entered_.front().lost));
}

void PreparedVideo::add(FramePtr frame, const FramePosition& position) {
    frame->interlaced_frame = position.interlacing != Interlacing::Progressive ? 1 : 0;
    frame->top_field_first = position.interlacing == Interlacing::TopFieldFirst ? 1 : 0;
    const bool impaired = (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0;
    ready_.push_back(std::make_unique<DecodedFrame>(std::move(frame), video_));
    ready_.back()->position = position;
    ready_.back()->impaired = impaired;
}

}  // namespace vireo
