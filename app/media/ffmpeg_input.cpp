// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_input.h"

#include "app/base/files.h"
#include "app/media/file_ending.h"
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

FfmpegInput::FfmpegInput(const std::string& input, const InputPolicy& policy, const StopRequest& stop)
    : file_(input, policy, &stop) {
    if (const int found = file_.findStreams(); found < 0)
        throw Error("cannot read " + name() + ": " + file_.failure(found));
    video_ = findVideo(context());
    if (video_ < 0) throw Error(name() + " holds no video and no picture");
    if (const auto excess = excessOf(video().codecpar->width, video().codecpar->height, policy))
        throw Error(name() + ": " + *excess);
}

AVRational FfmpegInput::frameRate() const {
    const AVRational rate = av_guess_frame_rate(&file_.context(), context().streams[video_], nullptr);
    return rate.num > 0 && rate.den > 0 ? rate : AVRational{25, 1};
}

AVRational FfmpegInput::pixelAspect(const AVFrame& frame) const {
    return av_guess_sample_aspect_ratio(&file_.context(), context().streams[video_],
                                        const_cast<AVFrame*>(&frame));
}

bool FfmpegInput::isPicture() const {
    const std::string_view format = context().iformat->name;
    return format == "image2" || format.ends_with("_pipe");
}

PacketPtr FfmpegInput::next() {
    if (ended_) return nullptr;
    PacketPtr packet = newPacket();
    libraryComplaint();
    const int got = av_read_frame(&file_.context(), packet.get());
    file_.refuseReferences();
    if (got >= 0) {
        note(*packet);
        continuous_.correct(*packet, context());
        return packet;
    }
    ended_ = true;
    // Some formats complain of a file that is cut off, and call that its end.
    breakReason_ = got == AVERROR_EOF ? libraryComplaint() : file_.failure(got);
    if (breakReason_.empty()) breakReason_ = earlyEnd();
    return nullptr;
}

void FfmpegInput::note(const AVPacket& packet) {
    if (packet.stream_index == video_ && packet.pos >= 0) lastEnd_ = packet.pos + packet.size;
    if ((packet.flags & AV_PKT_FLAG_CORRUPT) != 0) {
        corruptAtEnd_.insert(packet.stream_index);
    } else {
        corruptAtEnd_.erase(packet.stream_index);
    }
}

/// What the libraries do not say of the end of some formats.
std::string FfmpegInput::earlyEnd() const {
    const std::string_view format = context().iformat->name;
    const std::filesystem::path file = pathOf(name());
    // Here frames follow one another to the end.
    const bool isInPart = format == "yuv4mpegpipe" && lastEnd_ >= 0 && lastEnd_ != avio_tell(context().pb);
    if (isInPart) return "its last frame is there in part";
    const bool isFile = isSeekable();
    if (format == "gif" && isFile && gifBreaksOff(file)) return "it has no end";
    const bool isCut = format == "mpegts" && isFile && transportStreamBreaksOff(file);
    if (isCut || (format == "mpegts" && !corruptAtEnd_.empty())) return "its last packet is there in part";
    return {};
}

void FfmpegInput::seek(std::int64_t time, std::int64_t start) {
    seekToKeyFrame(file_.context(), video_, time, start);
    continuous_ = {};
    ended_ = false;
    lastEnd_ = -1;
    corruptAtEnd_.clear();
}

double FfmpegInput::timeOf(const AVPacket& packet) const {
    const std::int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    return time == AV_NOPTS_VALUE ? noTime : seconds(time, context().streams[packet.stream_index]->time_base);
}

}  // namespace vireo
