// SPDX-License-Identifier: MIT
#include "app/media/video_decoder.h"

#include "app/base/files.h"
#include "app/media/decoder_limits.h"
#include "app/media/exif.h"
#include "app/media/packet_index.h"
#include "engine/error.h"

extern "C" {
#include <libavutil/cpu.h>
}

#include <cmath>
#include <cstring>

namespace vireo {
namespace {

/// Video whose transparency is a second picture, which only this decoder reads.
const AVCodec* findDecoder(const AVStream& stream) {
    const AVDictionaryEntry* alpha = av_dict_get(stream.metadata, "alpha_mode", nullptr, 0);
    if (alpha != nullptr && std::strcmp(alpha->value, "1") == 0) {
        const char* name = stream.codecpar->codec_id == AV_CODEC_ID_VP9   ? "libvpx-vp9"
                           : stream.codecpar->codec_id == AV_CODEC_ID_VP8 ? "libvpx"
                                                                          : "";
        if (const AVCodec* decoder = avcodec_find_decoder_by_name(name)) return decoder;
    }
    return avcodec_find_decoder(stream.codecpar->codec_id);
}

/// The orientation nearest to a display matrix, which maps stored to shown positions with y downward.
Orientation matrixOrientation(const std::int32_t* m) {
    if (std::abs(static_cast<double>(m[1])) > std::abs(static_cast<double>(m[0])))
        return {true, m[3] < 0, m[1] < 0};
    return {false, m[0] < 0, m[4] < 0};
}

/// What the container says where the decoder does not.
Interlacing containerInterlacing(AVFieldOrder order) {
    switch (order) {
        case AV_FIELD_TT:
        case AV_FIELD_TB: return Interlacing::TopFieldFirst;
        case AV_FIELD_BB:
        case AV_FIELD_BT: return Interlacing::BottomFieldFirst;
        default: return Interlacing::Progressive;
    }
}

}  // namespace

VideoDecoder::VideoDecoder(const FfmpegInput& input, std::optional<Interlacing> forcedInterlacing,
                           PacketSource nextPacket, const StopRequest& stop)
    : input_(input), forcedInterlacing_(forcedInterlacing), nextPacket_(std::move(nextPacket)), stop_(stop) {
    const AVStream& stream = input_.video();
    const AVCodec* codec = findDecoder(stream);
    if (codec == nullptr) {
        throw Error(input_.name() + ": there is no decoder for " +
                    avcodec_get_name(stream.codecpar->codec_id));
    }
    decoder_.reset(avcodec_alloc_context3(codec));
    if (decoder_ == nullptr) throw std::bad_alloc();
    const std::string failure = "cannot decode " + input_.name();
    check(avcodec_parameters_to_context(decoder_.get(), stream.codecpar), failure);
    decoder_->pkt_timebase = stream.time_base;
    // Filters and the encoder have more to do; each of the decoder's threads holds frames of its own.
    decoder_->thread_count = std::max(1, av_cpu_count() / 2);
    limitDecoder(*decoder_, input_.policy());
    complaints_.watch(*decoder_);
    // What is decodable in part is rendered and named.
    decoder_->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
    check(avcodec_open2(decoder_.get(), codec, nullptr), failure);
}

void VideoDecoder::setClip(const ClipIndex& clip) {
    clip_ = clip;
    if (!clip_.times.empty()) firstTime_ = clip_.times.front();
    numbering_ = FrameNumbering(clip_.times);
    video_.frameRate = input_.frameRate();
    video_.timeBase = input_.video().time_base;
}

void VideoDecoder::restart() {
    avcodec_flush_buffers(decoder_.get());
    decoded_.clear();
    brokenPackets_.clear();
    numbering_ = FrameNumbering(clip_.times);
    drained_ = false;
    missing_.reset();
}

std::unique_ptr<FfmpegFrame> VideoDecoder::next() {
    while (decoded_.empty() && !drained_) {
        if (stop_.requested()) return nullptr;
        FramePtr frame = newFrame();
        const int received = avcodec_receive_frame(decoder_.get(), frame.get());
        if (received >= 0) {
            take(std::move(frame));
        } else if (received == AVERROR(EAGAIN)) {
            feed();
        } else if (received == AVERROR_EOF) {
            drained_ = true;
            takeLost(numbering_.rest());
            takeMissing();
        } else {
            noteFailure(received);
        }
    }
    if (decoded_.empty() && missing_) takeNextMissing();
    if (decoded_.empty()) return nullptr;
    std::unique_ptr<FfmpegFrame> frame = std::move(decoded_.front());
    decoded_.pop_front();
    return frame;
}

/// After the last packet drains the decoder.
void VideoDecoder::feed() {
    const PacketPtr packet = nextPacket_();
    if (packet != nullptr && holdsShownFrame(*packet, decoder_->codec_id)) {
        ++shownPackets_;
        if (packet->pts != AV_NOPTS_VALUE) numbering_.sent(packet->pts);
        if (breaksOff(*packet)) brokenPackets_.insert(packet->pts);
    }
    if (packet != nullptr) limitPacket(*packet, decoder_->codec_id);
    const int sent = avcodec_send_packet(decoder_.get(), packet.get());
    if (sent < 0) noteFailure(sent);
}

/// Whether the packet is there in part.
bool VideoDecoder::breaksOff(const AVPacket& packet) const {
    // In broadcasts the mark stands at every joint; their decoders tell what is broken.
    if (!input_.isBroadcast() && (packet.flags & AV_PKT_FLAG_CORRUPT) != 0) return true;
    // In clips some cameras leave the end out.
    return input_.isPicture() && pictureBreaksOff(packet, decoder_->codec_id);
}

void VideoDecoder::noteFailure(int code) {
    numbering_.failed();
    failure_ = complaints_.failure(code, input_.policy());
}

void VideoDecoder::take(FramePtr frame) {
    const bool first = video_.width == 0;
    if (first) setProperties(*frame);
    std::int64_t time = frame->best_effort_timestamp;
    if (time == AV_NOPTS_VALUE) time = nextTime_;
    nextTime_ = time + (frame->pkt_duration > 0 ? frame->pkt_duration : usualDuration());
    frame->pts = time;

    const Interlacing stored = interlacingOf(*frame);
    frame->interlaced_frame = stored != Interlacing::Progressive ? 1 : 0;
    frame->top_field_first = stored == Interlacing::TopFieldFirst ? 1 : 0;

    const FrameNumbering::Numbered numbered = numbering_.next(time);
    if (!firstTime_) firstTime_ = numbered.lost.empty() ? time : numbered.lost.front().time;
    takeLost(numbered.lost);
    const bool impaired = frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0 ||
                          brokenPackets_.erase(time) > 0 || complaints_.takeDamage();
    auto decoded = std::make_unique<DecodedFrame>(std::move(frame), video_);
    decoded->impaired = impaired;
    place(*decoded, numbered.number, time, uprightInterlacing(stored, video_));
    if (first) video_.interlacing = decoded->position.interlacing;
    decoded_.push_back(std::move(decoded));
}

void VideoDecoder::takeLost(const std::vector<FrameNumbering::Lost>& lost) {
    for (const FrameNumbering::Lost& frame : lost) {
        auto placeholder = std::make_unique<LostFrame>(frame.time, failure_);
        place(*placeholder, frame.number, frame.time, Interlacing::Progressive);
        decoded_.push_back(std::move(placeholder));
    }
}

/// What the container announced and the file does not hold any more.
void VideoDecoder::takeMissing() {
    if (shownPackets_ >= clip_.announcedFrames) return;
    failure_ = "the file ends before it";
    cutShort_ = true;
    missing_ = numbering_.following();
}

/// One at a time, since a container can announce any number.
void VideoDecoder::takeNextMissing() {
    // A part may end long before.
    const bool isBehindPart = lastWanted_ && *missing_ > *lastWanted_ + 1;
    if (*missing_ >= clip_.announcedFrames || isBehindPart || stop_.requested()) return;
    takeLost({{*missing_, nextTime_}});
    nextTime_ += usualDuration();
    ++*missing_;
}

void VideoDecoder::setProperties(const AVFrame& frame) {
    const AVStream& stream = input_.video();
    const AVCodecParameters& tags = *stream.codecpar;
    FramePtr tagged(av_frame_clone(&frame));
    if (tagged == nullptr) throw std::bad_alloc();
    if (knownTag(frame.color_range) == AVCOL_RANGE_UNSPECIFIED)
        tagged->color_range = knownTag(tags.color_range);
    if (knownTag(frame.colorspace) == AVCOL_SPC_UNSPECIFIED) tagged->colorspace = knownTag(tags.color_space);
    if (knownTag(frame.color_primaries) == AVCOL_PRI_UNSPECIFIED)
        tagged->color_primaries = knownTag(tags.color_primaries);
    if (knownTag(frame.color_trc) == AVCOL_TRC_UNSPECIFIED) tagged->color_trc = knownTag(tags.color_trc);
    tagged->sample_aspect_ratio = input_.pixelAspect(frame);

    const AVRational timeBase = video_.timeBase;
    const AVRational frameRate = video_.frameRate;
    video_ = propertiesOf(*tagged, tags.codec_id);
    video_.timeBase = timeBase;
    video_.frameRate = frameRate;

    const std::uint8_t* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix == nullptr) {
        const AVFrameSideData* data = av_frame_get_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX);
        if (data != nullptr) matrix = data->data;
    }
    if (matrix != nullptr) {
        std::int32_t values[9];
        std::memcpy(values, matrix, sizeof values);
        video_.orientation = matrixOrientation(values);
    } else if (!input_.isPipe()) {
        video_.orientation = exifOrientation(exifOrientationTag(pathOf(input_.name())));
    }
}

Interlacing VideoDecoder::interlacingOf(const AVFrame& frame) const {
    if (forcedInterlacing_) return *forcedInterlacing_;
    const Interlacing marked = markedInterlacing(frame);
    const AVCodecDescriptor* codec = avcodec_descriptor_get(decoder_->codec_id);
    // Many formats of single pictures leave it to the container.
    if (marked == Interlacing::Progressive && codec != nullptr && (codec->props & AV_CODEC_PROP_INTRA_ONLY))
        return containerInterlacing(input_.video().codecpar->field_order);
    return marked;
}

std::int64_t VideoDecoder::usualDuration() const {
    return av_rescale_q(1, av_inv_q(video_.frameRate), video_.timeBase);
}

void VideoDecoder::place(SourceFrame& frame, std::int64_t number, std::int64_t time,
                         Interlacing interlacing) const {
    frame.position = {number, clip_.frameCount, seconds(time - firstTime_.value_or(time), video_.timeBase),
                      av_q2d(video_.frameRate), interlacing};
}

}  // namespace vireo
