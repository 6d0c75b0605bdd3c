// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_writer.h"

#include "app/media/pass_log.h"
#include "engine/error.h"

extern "C" {
#include <libavutil/opt.h>
}

namespace vireo {
namespace {

/// What belongs to the video beside its pixels and holds of the output too.
void copySideData(const AVStream& from, AVStream& to) {
    for (AVPacketSideDataType type : {AV_PKT_DATA_MASTERING_DISPLAY_METADATA, AV_PKT_DATA_CONTENT_LIGHT_LEVEL,
                                      AV_PKT_DATA_SPHERICAL, AV_PKT_DATA_STEREO3D}) {
        std::size_t size = 0;
        const std::uint8_t* data = av_stream_get_side_data(&from, type, &size);
        if (data == nullptr) continue;
        std::uint8_t* copy = av_stream_new_side_data(&to, type, size);
        if (copy != nullptr) std::copy(data, data + size, copy);
    }
}

/// Packets that were in a container have its form, which goes with what its header says of them.
void takeEncoding(const AVCodecParameters& from, AVCodecParameters& to) {
    to.codec_id = from.codec_id;
    to.codec_tag = from.codec_tag;
    to.profile = from.profile;
    to.level = from.level;
    to.bits_per_coded_sample = from.bits_per_coded_sample;
    to.video_delay = from.video_delay;
    av_freep(&to.extradata);
    to.extradata_size = 0;
    if (from.extradata_size == 0) return;
    const auto size = static_cast<std::size_t>(from.extradata_size);
    to.extradata = static_cast<std::uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (to.extradata == nullptr) throw std::bad_alloc();
    to.extradata_size = from.extradata_size;
    std::copy_n(from.extradata, size, to.extradata);
}

/// The options that are not the encoder's.
void setContainerOptions(AVCodecContext& encoder, const RenderJob& job, Dictionary& options) {
    for (const auto& [name, value] : job.encoderOptions) {
        if (av_opt_find(&encoder, name.c_str(), nullptr, 0, AV_OPT_SEARCH_CHILDREN) == nullptr)
            options.set(name, value);
    }
}

}  // namespace

FfmpegWriter::FfmpegWriter(const RenderJob& job, FfmpegReader* reader, const VideoProperties& video,
                           int depth, const StopRequest& stop, Messages& messages,
                           const AVCodecParameters* encoded)
    : choice_(chooseVideoEncoder(job, video, depth)),
      muxer_(job, *choice_.container, stop),
      firstPass_(job.pass == 1 ? job.passLog.get() : nullptr),
      encodes_(encoded == nullptr),
      // libvpx spends a rate by frames, not by their times.
      clock_(*choice_.container, *choice_.codec, video, job.twoPass,
             reader != nullptr ? reader->clipStart() : 0, reader != nullptr ? reader->timeOrigin() : 0) {
    encoder_ = newEncoder(choice_, video);
    encoder_->framerate = clock_.frameRate();
    encoder_->time_base = clock_.encoderBase();
    if ((choice_.container->flags & AVFMT_GLOBALHEADER) != 0) encoder_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    Dictionary options;
    if (encoded == nullptr) {
        openEncoder(*encoder_, choice_, job, &options);
    } else {
        setContainerOptions(*encoder_, job, options);
    }

    if (choice_.note) messages.notice(choice_.note->code, choice_.note->text);
    frames_.emplace(choice_, *encoder_, video.premultiplied, messages);
    if (firstPass_ != nullptr) {
        if (reader != nullptr) reader->connect([](PacketPtr) {});
        return;
    }
    AVFormatContext& output = muxer_.context();
    stream_ = avformat_new_stream(&output, nullptr);
    if (stream_ == nullptr) throw std::bad_alloc();
    check(avcodec_parameters_from_context(stream_->codecpar, encoder_.get()), "cannot write the video");
    if (encoded != nullptr) takeEncoding(*encoded, *stream_->codecpar);
    stream_->time_base = clock_.timeBase();
    stream_->avg_frame_rate = encoder_->framerate;
    stream_->sample_aspect_ratio = encoder_->sample_aspect_ratio;
    if (reader != nullptr) {
        AVStream& source = *reader->input().streams[reader->videoStream()];
        copyTags(source.metadata, &stream_->metadata);
        stream_->disposition = source.disposition;
        copySideData(source, *stream_);
        others_.emplace(*reader, muxer_, job.noAudio, messages);
    }
    if (choice_.alpha && std::string_view(choice_.container->name) == "webm")
        av_dict_set(&stream_->metadata, "alpha_mode", "1", 0);
    // Here only decoding times lie before 0, which Matroska does not store: nothing needs to be shifted.
    const std::string_view container = choice_.container->name;
    if (container == "matroska" || container == "webm")
        output.avoid_negative_ts = reader == nullptr || reader->beginsAtZero() ? 0 : -1;
    // Here frames are counted, and sound that begins before 0 would move them by a part of one.
    if (container == "avi") output.avoid_negative_ts = 0;
    muxer_.begin(options);
    if (options.anyName() != nullptr) {
        throw Error(std::string("neither the encoder ") + choice_.codec->name + " nor the format " +
                        choice_.container->name + " has an option named " + options.anyName(),
                    2);
    }
    if (reader != nullptr) reader->connect([this](PacketPtr packet) { others_->take(std::move(packet)); });
}

std::unique_ptr<OutputFrame> FfmpegWriter::convert(const Picture& picture, const SourceFrame& source) {
    const auto& decoded = dynamic_cast<const FfmpegFrame&>(source);
    return std::make_unique<FfmpegOutputFrame>(frames_->frameOf(picture, decoded));
}

void FfmpegWriter::write(std::unique_ptr<OutputFrame> output) {
    AVFrame& frame = *static_cast<FfmpegOutputFrame&>(*output).frame;
    frame.pts = clock_.enter(frame.pts, frame.pkt_duration);
    encode(encoder_->hw_frames_ctx != nullptr ? onDevice(frame).get() : &frame);
}

FramePtr FfmpegWriter::onDevice(const AVFrame& frame) const {
    FramePtr uploaded = newFrame();
    const std::string what = "cannot hand a frame to the device";
    check(av_hwframe_get_buffer(encoder_->hw_frames_ctx, uploaded.get(), 0), what);
    check(av_hwframe_transfer_data(uploaded.get(), &frame, 0), what);
    check(av_frame_copy_props(uploaded.get(), &frame), what);
    return uploaded;
}

void FfmpegWriter::encode(const AVFrame* frame) {
    check(avcodec_send_frame(encoder_.get(), frame), "cannot encode the video");
    while (true) {
        PacketPtr packet = newPacket();
        const int received = avcodec_receive_packet(encoder_.get(), packet.get());
        const bool isTold = received >= 0 || received == AVERROR_EOF;
        if (firstPass_ != nullptr && isTold && encoder_->stats_out != nullptr)
            firstPass_->statistics += encoder_->stats_out;
        if (received == AVERROR(EAGAIN) || received == AVERROR_EOF) return;
        check(received, "cannot encode the video");
        throwIfInterrupted();
        clock_.leave(*packet);
        if (firstPass_ != nullptr) continue;
        writeEncoded(std::move(packet));
    }
}

void FfmpegWriter::writeEncoded(PacketPtr packet) {
    av_packet_rescale_ts(packet.get(), clock_.timeBase(), stream_->time_base);
    packet->stream_index = stream_->index;
    muxer_.write(std::move(packet));
}

void FfmpegWriter::finish() {
    if (encodes_) encode(nullptr);
    if (firstPass_ != nullptr) return;
    if (others_) others_->finish();
    muxer_.finish();
}

}  // namespace vireo
