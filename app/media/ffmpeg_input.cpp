// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_input.h"

#include "app/base/files.h"
#include "app/media/key_frame_seek.h"
#include "engine/error.h"

namespace vireo {
namespace {

/// The stream that is rendered: the first that is no cover art, before it one that is marked as default.
int findVideo(const AVFormatContext& input) {
    int found = -1;
    for (int i = 0; i < static_cast<int>(input.nb_streams); ++i) {
        const AVStream& stream = *input.streams[i];
        if (stream.codecpar->codec_type != AVMEDIA_TYPE_VIDEO ||
            (stream.disposition & (AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS)) != 0)
            continue;
        if ((stream.disposition & AV_DISPOSITION_DEFAULT) != 0) return i;
        if (found < 0) found = i;
    }
    return found;
}

}  // namespace

FfmpegInput::FfmpegInput(const std::string& input, const StopRequest& stop)
    : name_(input == "-" ? "standard input" : input) {
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) throw std::bad_alloc();
    context->interrupt_callback = interruptBy(stop);
    std::string url;
    if (input == "-") {
        pipe_ = std::make_unique<PipeIo>(0, PipeIo::Direction::Read, stop);
        context->pb = pipe_->context();
    } else {
        url = fileUrl(input);
    }
    Dictionary options;
    options.set("pattern_type", "none");  // a name with a per cent sign is a name
    const int opened = avformat_open_input(&context, url.c_str(), nullptr, options.address());
    throwIfInterrupted();
    if (opened == AVERROR(EACCES) && isHeld(pathOf(input)))
        throw Error("cannot open " + name_ + ": another program has it open");
    check(opened, "cannot open " + name_);
    context_.reset(context);
    check(avformat_find_stream_info(context, nullptr), "cannot read " + name_);
    throwIfInterrupted();
    video_ = findVideo(*context);
    if (video_ < 0) throw Error(name_ + " holds no video and no picture");
}

AVRational FfmpegInput::frameRate() const {
    const AVRational rate = av_guess_frame_rate(context_.get(), context_->streams[video_], nullptr);
    return rate.num > 0 && rate.den > 0 ? rate : AVRational{25, 1};
}

AVRational FfmpegInput::pixelAspect(const AVFrame& frame) const {
    return av_guess_sample_aspect_ratio(context_.get(), context_->streams[video_],
                                        const_cast<AVFrame*>(&frame));
}

bool FfmpegInput::isSeekable() const {
    return pipe_ == nullptr && context_->pb != nullptr &&
           (context_->pb->seekable & AVIO_SEEKABLE_NORMAL) != 0;
}

PacketPtr FfmpegInput::next() {
    if (ended_) return nullptr;
    PacketPtr packet = newPacket();
    libraryComplaint();
    const int got = av_read_frame(context_.get(), packet.get());
    if (got >= 0) {
        continuous_.correct(*packet, *context_);
        return packet;
    }
    ended_ = true;
    // Some formats complain of a file that is cut off, and call that its end.
    breakReason_ = got == AVERROR_EOF ? libraryComplaint() : failureText(got);
    return nullptr;
}

void FfmpegInput::seek(std::int64_t time, std::int64_t start) {
    seekToKeyFrame(*context_, video_, time, start);
    continuous_ = {};
    ended_ = false;
}

double FfmpegInput::timeOf(const AVPacket& packet) const {
    const std::int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    return time == AV_NOPTS_VALUE ? noTime : seconds(time, context_->streams[packet.stream_index]->time_base);
}

}  // namespace vireo
