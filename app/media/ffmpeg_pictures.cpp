// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_pictures.h"

#include "app/base/files.h"
#include "app/media/decoder_complaints.h"
#include "app/media/decoder_limits.h"
#include "app/media/exif.h"
#include "app/media/guarded_input.h"
#include "app/media/pixel_format.h"
#include "engine/error.h"

namespace vireo {
namespace {

std::unique_ptr<GuardedInput> openPicture(const std::filesystem::path& path, const InputPolicy& policy) {
    try {
        return std::make_unique<GuardedInput>(utf8Of(path), policy, nullptr);
    } catch (const Error& failure) {
        throwIfInterrupted();
        throw DamagedFrame(failure.what());
    }
}

/// The first picture of a file, with its properties. Throws DamagedFrame.
FramePtr readPicture(const std::filesystem::path& path, const InputPolicy& policy, VideoProperties& video) {
    DecoderComplaints complaints;
    const auto checked = [&](int code) {
        if (code < 0) throw DamagedFrame(utf8Of(path) + ": " + complaints.failure(code, policy));
    };
    captureLibraryMessages();
    const auto input = openPicture(path, policy);
    AVFormatContext* const context = &input->context();
    const AVCodec* codec = nullptr;
    checked(av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0));
    const int stream = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, &codec, 0);
    const CodecContextPtr decoder(avcodec_alloc_context3(codec));
    if (decoder == nullptr) throw std::bad_alloc();
    checked(avcodec_parameters_to_context(decoder.get(), context->streams[stream]->codecpar));
    complaints.watch(*decoder);
    decoder->thread_count = 1;  // pictures are read side by side
    limitDecoder(*decoder, policy);
    checked(avcodec_open2(decoder.get(), codec, nullptr));

    FramePtr frame = newFrame();
    const PacketPtr packet = newPacket();
    int received = AVERROR(EAGAIN);
    bool breaksOff = false;
    while (received == AVERROR(EAGAIN)) {
        av_packet_unref(packet.get());
        const int got = av_read_frame(context, packet.get());
        if (got >= 0 && packet->stream_index != stream) continue;
        if (got >= 0) breaksOff = pictureBreaksOff(*packet, codec->id);
        if (got >= 0) limitPacket(*packet, codec->id);
        checked(avcodec_send_packet(decoder.get(), got >= 0 ? packet.get() : nullptr));
        received = avcodec_receive_frame(decoder.get(), frame.get());
    }
    checked(received);
    if (breaksOff || complaints.takeDamage()) frame->flags |= AV_FRAME_FLAG_CORRUPT;
    video = propertiesOf(*frame, codec->id);
    video.orientation = exifOrientation(exifOrientationTag(path));
    return frame;
}

void mark(AVFrame& frame, Interlacing interlacing) {
    frame.interlaced_frame = interlacing != Interlacing::Progressive ? 1 : 0;
    frame.top_field_first = interlacing == Interlacing::TopFieldFirst ? 1 : 0;
}

/// Takes a picture through FFmpeg's own filters; `video` becomes what it is like then.
FramePtr prepared(FramePtr frame, VideoProperties& video, const GraphPlan& plan) {
    FrameGraph graph(plan, *frame, video, {1, 1});
    const int flags = frame->flags, errors = frame->decode_error_flags;
    frame->pts = 0;
    graph.push(std::move(frame));
    graph.end(1);
    FramePtr result = graph.pull();
    if (result == nullptr) throw Error("a picture cannot be prepared");
    result->flags = flags;
    result->decode_error_flags = errors;
    video = graph.outputOf(video);
    return result;
}

/// A picture that is read when its pixels are asked for.
class PictureFrame : public FfmpegFrame {
public:
    /// `interlacing` is how it is stored, `plan` null where it is rendered as it is.
    PictureFrame(std::filesystem::path path, const InputPolicy& policy, std::int64_t number,
                 const VideoProperties& first, Interlacing interlacing, const GraphPlan* plan)
        : path_(std::move(path)),
          policy_(policy),
          number_(number),
          first_(first),
          interlacing_(interlacing),
          plan_(plan),
          frame_(newFrame()) {
        frame_->pts = number;
        frame_->pkt_duration = 1;
    }

    PicturePtr picture(std::uint32_t format) override {
        VideoProperties video;
        frame_ = readPicture(path_, policy_, video);
        impaired = frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0;
        frame_->pts = number_;
        frame_->pkt_duration = 1;
        if (plan_ != nullptr) {
            mark(*frame_, interlacing_);
            frame_ = prepared(std::move(frame_), video, *plan_);
            frame_->pts = number_;
            frame_->pkt_duration = 1;
        }
        mark(*frame_, position.interlacing);
        // All frames have the size of the first.
        const bool turned = video.orientation.transpose != first_.orientation.transpose;
        video.width = turned ? first_.height : first_.width;
        video.height = turned ? first_.width : first_.height;
        video.premultiplied = first_.premultiplied && formatHasAlpha(video.format);
        video.dithers = first_.dithers;
        DecodedFrame decoded(std::move(frame_), video);
        PicturePtr result = decoded.picture(format);
        frame_ = newFrame();
        check(av_frame_copy_props(frame_.get(), &decoded.properties()), "cannot read " + utf8Of(path_));
        return result;
    }

    const AVFrame& properties() const override { return *frame_; }

private:
    std::filesystem::path path_;
    const InputPolicy& policy_;
    std::int64_t number_;
    const VideoProperties& first_;
    const Interlacing interlacing_;
    const GraphPlan* plan_;
    FramePtr frame_;
};

}  // namespace

FfmpegPictureSource::FfmpegPictureSource(const RenderJob& job, Messages& messages)
    : messages_(messages),
      policy_(job.policy),
      premultiplied_(job.premultiplied),
      dithers_(job.dithers),
      preparation_(job.preparation),
      interlacing_(job.interlacing.value_or(Interlacing::Progressive)) {}

SourceInfo FfmpegPictureSource::probe(const std::filesystem::path& file) {
    FramePtr frame = readPicture(file, policy_, video_);
    video_.premultiplied = premultiplied_ && formatHasAlpha(video_.format);
    video_.dithers = dithers_;
    video_.interlacing = interlacing_;
    prepared_ = video_;
    if (preparation_.changesPictures()) {
        Preparation pictures = preparation_;
        pictures.rate.reset();
        plan_ = planGraph(pictures, video_, utf8Of(file));
        if (!plan_->note.empty())
            messages_.notice(MessageCode::PreparationAdjusted, utf8Of(file) + ": " + plan_->note);
        prepared(std::move(frame), prepared_, *plan_);
        if (preparation_.deinterlace) prepared_.interlacing = Interlacing::Progressive;
    }
    // Pictures have no clock of their own.
    if (const auto& rate = preparation_.rate) {
        prepared_.frameRate = {rate->numerator, rate->denominator};
        prepared_.timeBase = av_inv_q(prepared_.frameRate);
    }
    SourceInfo info;
    info.width = prepared_.uprightWidth();
    info.height = prepared_.uprightHeight();
    info.depth = formatDepth(prepared_.format);
    info.alpha = formatHasAlpha(prepared_.format);
    return info;
}

std::unique_ptr<SourceFrame> FfmpegPictureSource::frame(const std::filesystem::path& file,
                                                        std::int64_t number) {
    return std::make_unique<PictureFrame>(file, policy_, number, prepared_, interlacing_,
                                          plan_ ? &*plan_ : nullptr);
}

FfmpegPictureTarget::FfmpegPictureTarget(const RenderJob& job, const VideoProperties& video, int depth,
                                         Messages& messages)
    : job_(job),
      video_(video),
      depth_(depth),
      opaque_(way(false, messages)),
      transparent_(way(true, messages)) {}

FfmpegPictureTarget::Way FfmpegPictureTarget::way(bool alpha, Messages& messages) const {
    EncoderChoice choice = choosePictureEncoder(job_, video_, depth_, alpha);
    const CodecContextPtr encoder = openedEncoder(choice);
    if (!alpha && choice.note) messages.notice(choice.note->code, choice.note->text);
    return {choice, {choice, *encoder, video_.premultiplied, messages}};
}

CodecContextPtr FfmpegPictureTarget::openedEncoder(const EncoderChoice& choice) const {
    CodecContextPtr encoder = newEncoder(choice, video_);
    encoder->thread_count = 1;
    openEncoder(*encoder, choice, job_, nullptr);
    return encoder;
}

std::vector<std::uint8_t> FfmpegPictureTarget::encode(const Picture& picture, const SourceFrame& source,
                                                      bool alpha) {
    Way& used = alpha ? transparent_ : opaque_;
    const FramePtr frame = used.frames.frameOf(picture, dynamic_cast<const FfmpegFrame&>(source), !alpha);
    frame->pts = 0;
    const CodecContextPtr encoder = openedEncoder(used.choice);
    check(avcodec_send_frame(encoder.get(), frame.get()), "cannot encode a picture");
    check(avcodec_send_frame(encoder.get(), nullptr), "cannot encode a picture");
    std::vector<std::uint8_t> bytes;
    const PacketPtr packet = newPacket();
    int received = 0;
    while ((received = avcodec_receive_packet(encoder.get(), packet.get())) >= 0) {
        bytes.insert(bytes.end(), packet->data, packet->data + packet->size);
        av_packet_unref(packet.get());
    }
    if (received != AVERROR_EOF) check(received, "cannot encode a picture");
    return bytes;
}

}  // namespace vireo
