// SPDX-License-Identifier: MIT
#include "app/media/stream_transcoding.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

namespace vireo {
namespace {

constexpr AVRational milliseconds{1, 1000};
constexpr std::size_t longestSubtitle = 1 << 20;

CodecContextPtr openedDecoder(const AVStream& from) {
    const AVCodec* codec = avcodec_find_decoder(from.codecpar->codec_id);
    if (codec == nullptr) return nullptr;
    CodecContextPtr decoder(avcodec_alloc_context3(codec));
    if (decoder == nullptr) throw std::bad_alloc();
    decoder->pkt_timebase = from.time_base;
    if (avcodec_parameters_to_context(decoder.get(), from.codecpar) < 0 ||
        avcodec_open2(decoder.get(), codec, nullptr) < 0)
        return nullptr;
    return decoder;
}

/// Adds a stream for an encoder that is open.
AVStream& addStream(Muxer& muxer, const AVCodecContext& encoder) {
    AVStream& stream = *avformat_new_stream(&muxer.context(), nullptr);
    check(avcodec_parameters_from_context(stream.codecpar, &encoder), "cannot add a stream");
    stream.time_base = encoder.time_base;
    return stream;
}

class ConvertedSound : public StreamCopy {
public:
    ConvertedSound(const AVStream& from, CodecContextPtr decoder, CodecContextPtr encoder,
                   ResamplerPtr resampler, Muxer& muxer, double timeOrigin)
        : fromBase_(from.time_base),
          timeOrigin_(timeOrigin),
          decoder_(std::move(decoder)),
          encoder_(std::move(encoder)),
          resampler_(std::move(resampler)),
          fifo_(av_audio_fifo_alloc(encoder_->sample_fmt, encoder_->ch_layout.nb_channels, 4096)),
          muxer_(muxer),
          to_(addStream(muxer, *encoder_)) {
        if (fifo_ == nullptr) throw std::bad_alloc();
    }

    void take(PacketPtr packet) override {
        // Damaged sound leaves a gap, as it does in a player.
        if (avcodec_send_packet(decoder_.get(), packet.get()) >= 0) decodeAll();
    }

    void finish() override {
        avcodec_send_packet(decoder_.get(), nullptr);
        decodeAll();
        resample(nullptr);
        encodeBuffered(true);
        avcodec_send_frame(encoder_.get(), nullptr);
        writePackets();
    }

private:
    void decodeAll() {
        const FramePtr frame = newFrame();
        while (avcodec_receive_frame(decoder_.get(), frame.get()) >= 0) {
            placeInTime(*frame);
            resample(frame.get());
            encodeBuffered(false);
            av_frame_unref(frame.get());
        }
    }

    /// Samples are counted from the first one; a gap in the source of more than a tenth of a second is kept.
    void placeInTime(const AVFrame& frame) {
        if (frame.pts == AV_NOPTS_VALUE) return;
        const double time = seconds(frame.pts, fromBase_) - timeOrigin_;
        const std::int64_t wanted = std::llround(time * encoder_->sample_rate);
        if (nextSample_ == unknown) {
            nextSample_ = wanted;
        } else if (wanted - nextSample_ - av_audio_fifo_size(fifo_.get()) > encoder_->sample_rate / 10) {
            encodeBuffered(true);
            nextSample_ = wanted;
        }
    }

    /// Null drains what the resampler holds.
    void resample(const AVFrame* frame) {
        const int most = swr_get_out_samples(resampler_.get(), frame != nullptr ? frame->nb_samples : 0);
        if (most <= 0) return;
        const FramePtr out = encoderFrame(most);
        const int count =
            swr_convert(resampler_.get(), out->extended_data, most,
                        frame != nullptr ? const_cast<const std::uint8_t**>(frame->extended_data) : nullptr,
                        frame != nullptr ? frame->nb_samples : 0);
        check(count, "cannot convert the sound");
        av_audio_fifo_write(fifo_.get(), reinterpret_cast<void**>(out->extended_data), count);
    }

    void encodeBuffered(bool all) {
        const bool anySize = (encoder_->codec->capabilities & AV_CODEC_CAP_VARIABLE_FRAME_SIZE) != 0;
        const int usual = anySize || encoder_->frame_size == 0 ? 1024 : encoder_->frame_size;
        while (av_audio_fifo_size(fifo_.get()) >= (all ? 1 : usual)) {
            const int count = std::min(usual, av_audio_fifo_size(fifo_.get()));
            const FramePtr frame = encoderFrame(count);
            av_audio_fifo_read(fifo_.get(), reinterpret_cast<void**>(frame->extended_data), count);
            if (nextSample_ == unknown) nextSample_ = 0;
            frame->pts = nextSample_;
            nextSample_ += count;
            check(avcodec_send_frame(encoder_.get(), frame.get()), "cannot encode the sound");
            writePackets();
        }
    }

    FramePtr encoderFrame(int samples) const {
        FramePtr frame = newFrame();
        frame->nb_samples = samples;
        frame->format = encoder_->sample_fmt;
        frame->sample_rate = encoder_->sample_rate;
        check(av_channel_layout_copy(&frame->ch_layout, &encoder_->ch_layout), "cannot convert the sound");
        check(av_frame_get_buffer(frame.get(), 0), "cannot convert the sound");
        return frame;
    }

    void writePackets() {
        while (true) {
            PacketPtr packet = newPacket();
            if (avcodec_receive_packet(encoder_.get(), packet.get()) < 0) return;
            av_packet_rescale_ts(packet.get(), encoder_->time_base, to_.time_base);
            packet->stream_index = to_.index;
            muxer_.write(std::move(packet));
        }
    }

    static constexpr std::int64_t unknown = std::numeric_limits<std::int64_t>::min();

    AVRational fromBase_;
    double timeOrigin_;
    CodecContextPtr decoder_;
    CodecContextPtr encoder_;
    ResamplerPtr resampler_;
    AudioFifoPtr fifo_;
    Muxer& muxer_;
    AVStream& to_;
    std::int64_t nextSample_ = unknown;  ///< Time of the next one to encode.
};

/// The rate nearest to the source's that the encoder takes.
int sampleRate(const AVCodec& codec, int wanted) {
    if (codec.supported_samplerates == nullptr) return wanted;
    int best = codec.supported_samplerates[0];
    for (const int* rate = codec.supported_samplerates; *rate != 0; ++rate) {
        if (*rate == wanted) return wanted;
        if (std::abs(*rate - wanted) < std::abs(best - wanted)) best = *rate;
    }
    return best;
}

class ConvertedSubtitles : public StreamCopy {
public:
    ConvertedSubtitles(CodecContextPtr decoder, CodecContextPtr encoder, Muxer& muxer, double timeOrigin)
        : origin_(std::llround(timeOrigin * AV_TIME_BASE)),
          decoder_(std::move(decoder)),
          encoder_(std::move(encoder)),
          muxer_(muxer),
          to_(addStream(muxer, *encoder_)) {}

    void take(PacketPtr packet) override {
        AVSubtitle subtitle{};
        int got = 0;
        if (avcodec_decode_subtitle2(decoder_.get(), &subtitle, &got, packet.get()) < 0 || got == 0) return;
        const std::unique_ptr<AVSubtitle, ReleaseBy<avsubtitle_free>> owner(&subtitle);
        if (subtitle.num_rects == 0 || subtitle.pts == AV_NOPTS_VALUE) return;
        subtitle.pts += av_rescale_q(subtitle.start_display_time, milliseconds, AV_TIME_BASE_Q) - origin_;
        subtitle.end_display_time -= subtitle.start_display_time;
        subtitle.start_display_time = 0;

        std::vector<std::uint8_t> text(longestSubtitle);
        const int size =
            avcodec_encode_subtitle(encoder_.get(), text.data(), static_cast<int>(text.size()), &subtitle);
        if (size <= 0) return;
        PacketPtr encoded = newPacket();
        check(av_new_packet(encoded.get(), size), "cannot convert subtitles");
        std::memcpy(encoded->data, text.data(), static_cast<std::size_t>(size));
        encoded->pts = encoded->dts = av_rescale_q(subtitle.pts, AV_TIME_BASE_Q, to_.time_base);
        encoded->duration = av_rescale_q(subtitle.end_display_time, milliseconds, to_.time_base);
        encoded->stream_index = to_.index;
        muxer_.write(std::move(encoded));
    }

private:
    std::int64_t origin_;
    CodecContextPtr decoder_;
    CodecContextPtr encoder_;
    Muxer& muxer_;
    AVStream& to_;
};

bool isText(AVCodecID codec) {
    const AVCodecDescriptor* description = avcodec_descriptor_get(codec);
    return description != nullptr && (description->props & AV_CODEC_PROP_TEXT_SUB) != 0;
}

}  // namespace

std::unique_ptr<StreamCopy> transcodeSound(const AVStream& from, Muxer& muxer, double timeOrigin) {
    const AVOutputFormat& container = *muxer.context().oformat;
    const AVCodec* codec = avcodec_find_encoder(container.audio_codec);
    CodecContextPtr decoder = openedDecoder(from);
    if (codec == nullptr || decoder == nullptr || decoder->sample_rate <= 0) return nullptr;

    CodecContextPtr encoder(avcodec_alloc_context3(codec));
    if (encoder == nullptr) throw std::bad_alloc();
    encoder->sample_fmt = codec->sample_fmts != nullptr ? codec->sample_fmts[0] : decoder->sample_fmt;
    encoder->sample_rate = sampleRate(*codec, decoder->sample_rate);
    encoder->time_base = {1, encoder->sample_rate};
    const int channels = decoder->ch_layout.nb_channels;
    av_channel_layout_default(&encoder->ch_layout, channels);
    encoder->bit_rate = 96000LL * channels;
    if ((container.flags & AVFMT_GLOBALHEADER) != 0) encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (avcodec_open2(encoder.get(), codec, nullptr) < 0) return nullptr;

    AVChannelLayout source{};
    if (decoder->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
        av_channel_layout_default(&source, channels);
    } else {
        av_channel_layout_copy(&source, &decoder->ch_layout);
    }
    SwrContext* resampler = nullptr;
    const int allocated =
        swr_alloc_set_opts2(&resampler, &encoder->ch_layout, encoder->sample_fmt, encoder->sample_rate,
                            &source, decoder->sample_fmt, decoder->sample_rate, 0, nullptr);
    av_channel_layout_uninit(&source);
    ResamplerPtr owner(resampler);
    if (allocated < 0 || swr_init(resampler) < 0) return nullptr;
    return std::make_unique<ConvertedSound>(from, std::move(decoder), std::move(encoder), std::move(owner),
                                            muxer, timeOrigin);
}

std::unique_ptr<StreamCopy> transcodeSubtitles(const AVStream& from, Muxer& muxer, double timeOrigin) {
    const AVOutputFormat& container = *muxer.context().oformat;
    const bool mov = std::strcmp(container.name, "mp4") == 0 || std::strcmp(container.name, "mov") == 0;
    const AVCodecID kind = mov                                            ? AV_CODEC_ID_MOV_TEXT
                           : std::strcmp(container.name, "webm") == 0     ? AV_CODEC_ID_WEBVTT
                           : std::strcmp(container.name, "matroska") == 0 ? AV_CODEC_ID_SUBRIP
                                                                          : AV_CODEC_ID_NONE;
    const AVCodec* codec = avcodec_find_encoder(kind);
    if (codec == nullptr || !isText(from.codecpar->codec_id)) return nullptr;
    CodecContextPtr decoder = openedDecoder(from);
    if (decoder == nullptr) return nullptr;

    CodecContextPtr encoder(avcodec_alloc_context3(codec));
    if (encoder == nullptr) throw std::bad_alloc();
    encoder->time_base = milliseconds;
    if (decoder->subtitle_header != nullptr) {
        const auto size = static_cast<std::size_t>(decoder->subtitle_header_size);
        encoder->subtitle_header = static_cast<std::uint8_t*>(av_mallocz(size + 1));
        if (encoder->subtitle_header == nullptr) throw std::bad_alloc();
        std::memcpy(encoder->subtitle_header, decoder->subtitle_header, size);
        encoder->subtitle_header_size = decoder->subtitle_header_size;
    }
    if (avcodec_open2(encoder.get(), codec, nullptr) < 0) return nullptr;
    return std::make_unique<ConvertedSubtitles>(std::move(decoder), std::move(encoder), muxer, timeOrigin);
}

}  // namespace vireo
