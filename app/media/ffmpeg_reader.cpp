// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_reader.h"

#include "app/media/exif.h"

extern "C" {
#include <libavutil/cpu.h>
}

#include <cmath>
#include <cstring>

namespace vireo {
namespace {

constexpr double noTime = -std::numeric_limits<double>::infinity();

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

Interlacing interlacingOf(const AVFrame& frame) {
    if (frame.interlaced_frame == 0) return Interlacing::Progressive;
    return frame.top_field_first != 0 ? Interlacing::TopFieldFirst : Interlacing::BottomFieldFirst;
}

/// What the container says where the decoder does not.
Interlacing interlacingOf(AVFieldOrder order) {
    switch (order) {
        case AV_FIELD_TT:
        case AV_FIELD_TB: return Interlacing::TopFieldFirst;
        case AV_FIELD_BB:
        case AV_FIELD_BT: return Interlacing::BottomFieldFirst;
        default: return Interlacing::Progressive;
    }
}

double packetTime(const AVPacket& packet, const AVStream& stream) {
    const std::int64_t time = packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
    return time == AV_NOPTS_VALUE ? noTime : seconds(time, stream.time_base);
}

}  // namespace

FfmpegReader::FfmpegReader(const RenderJob& job, int lookBack, const StopRequest& stop, Messages& messages)
    : stop_(stop),
      messages_(messages),
      name_(job.input == "-" ? "standard input" : job.input),
      strict_(job.strict),
      forcedInterlacing_(job.interlacing),
      range_(job.frames.value_or(FrameRange{})) {
    if (job.start) start_ = *job.start;
    if (job.duration && !job.frames) end_ = std::max(0.0, job.start.value_or(0)) + *job.duration;
    open(job);
    openDecoder();
    findLength(job);
    seekToPart(job, lookBack);
    readToPart(job, lookBack);
    describe(job);
}

void FfmpegReader::open(const RenderJob& job) {
    AVFormatContext* context = avformat_alloc_context();
    if (context == nullptr) throw std::bad_alloc();
    context->interrupt_callback = interruptBy(stop_);
    std::string url;
    if (job.input == "-") {
        pipe_ = std::make_unique<PipeIo>(0, PipeIo::Direction::Read, stop_);
        context->pb = pipe_->context();
    } else {
        url = fileUrl(job.input);
    }
    Dictionary options;
    options.set("pattern_type", "none");  // a name with a per cent sign is a name
    const int opened = avformat_open_input(&context, url.c_str(), nullptr, options.address());
    throwIfInterrupted();
    check(opened, "cannot open " + name_);
    input_.reset(context);
    check(avformat_find_stream_info(context, nullptr), "cannot read " + name_);
    throwIfInterrupted();
    stream_ = findVideo(*context);
    if (stream_ < 0) throw Error(name_ + " holds no video and no picture");
}

void FfmpegReader::openDecoder() {
    const AVStream& stream = *input_->streams[stream_];
    const AVCodec* codec = findDecoder(stream);
    if (codec == nullptr)
        throw Error(name_ + ": there is no decoder for " + avcodec_get_name(stream.codecpar->codec_id));
    decoder_.reset(avcodec_alloc_context3(codec));
    if (decoder_ == nullptr) throw std::bad_alloc();
    check(avcodec_parameters_to_context(decoder_.get(), stream.codecpar), "cannot decode " + name_);
    decoder_->pkt_timebase = stream.time_base;
    // Filters and the encoder have more to do; each of the decoder's threads holds frames of its own.
    decoder_->thread_count = std::max(1, av_cpu_count() / 2);
    // What is decodable in part is rendered and named.
    decoder_->flags |= AV_CODEC_FLAG_OUTPUT_CORRUPT;
    check(avcodec_open2(decoder_.get(), codec, nullptr), "cannot decode " + name_);
}

void FfmpegReader::findLength(const RenderJob& job) {
    const AVStream& stream = *input_->streams[stream_];
    const bool seekable = input_->pb != nullptr && (input_->pb->seekable & AVIO_SEEKABLE_NORMAL) != 0;
    const bool partWanted = job.frames || job.start;
    if (const auto exact = exactFrameCount(*input_, stream_)) announcedFrames_ = info_.frameCount = *exact;
    if (seekable && pipe_ == nullptr && (info_.frameCount == 0 || partWanted)) {
        PacketIndex index = indexPackets(job.input, stream_, stop_);
        throwIfInterrupted();
        info_.frameCount = index.count;
        times_ = std::move(index.times);
        seekable_ = !times_.empty() && !index.turnsBack;
        if (!times_.empty()) firstTime_ = times_.front();
        numbering_ = FrameNumbering(times_);
    }
    if (info_.frameCount == 0) info_.frameCount = job.clipLength.value_or(0);
    const AVRational rate = av_guess_frame_rate(input_.get(), const_cast<AVStream*>(&stream), nullptr);
    video_.frameRate = rate.num > 0 && rate.den > 0 ? rate : AVRational{25, 1};
    video_.timeBase = stream.time_base;
    info_.frameRate = av_q2d(video_.frameRate);
}

void FfmpegReader::seekToPart(const RenderJob& job, int lookBack) {
    if (!seekable_ || !(job.frames || job.start)) return;
    std::int64_t first = range_.first;
    if (job.start) {
        first = framesBefore(start_);
    }
    announcedFrames_ = 0;  // the packets before are not seen
    const std::int64_t wanted = std::min(first, static_cast<std::int64_t>(times_.size()) - 1) - lookBack;
    if (wanted <= 0) return;
    readClipProperties();
    seekTo(times_[static_cast<std::size_t>(wanted)]);
}

/// Parts join because all of them are written with what the clip's first frame says.
void FfmpegReader::readClipProperties() {
    decode();
    avcodec_flush_buffers(decoder_.get());
    decoded_.clear();
    otherPackets_.clear();
    brokenPackets_.clear();
    numbering_ = FrameNumbering(times_);
    continuous_ = {};
    inputEnded_ = drained_ = false;
}

/// To a key frame shown at that time or before.
void FfmpegReader::seekTo(std::int64_t target) {
    const AVStream& stream = *input_->streams[stream_];
    const PacketPtr packet = newPacket();
    // A container that seeks by decoding times may land on a key frame that is shown later than wanted.
    for (double back : {0.0, 2.0, 10.0, 60.0}) {
        const auto earlier = target - static_cast<std::int64_t>(back / av_q2d(stream.time_base));
        if (av_seek_frame(input_.get(), stream_, earlier, AVSEEK_FLAG_BACKWARD) < 0) break;
        while (av_read_frame(input_.get(), packet.get()) >= 0 && packet->stream_index != stream_)
            av_packet_unref(packet.get());
        const bool early = packet->stream_index == stream_ && packet->pts != AV_NOPTS_VALUE &&
                           packet->pts <= target && (packet->flags & AV_PKT_FLAG_KEY) != 0;
        av_packet_unref(packet.get());
        if (!early) continue;
        if (av_seek_frame(input_.get(), stream_, earlier, AVSEEK_FLAG_BACKWARD) >= 0) return;
    }
    av_seek_frame(input_.get(), stream_, times_.front(), AVSEEK_FLAG_BACKWARD);
}

void FfmpegReader::readToPart(const RenderJob& job, int lookBack) {
    std::unique_ptr<FfmpegFrame> frame = decode();
    while (frame != nullptr && (video_.width == 0 || beforePart(*frame))) {
        frame->preRoll = beforePart(*frame);
        const double time = seconds(frame->properties().pts, video_.timeBase);
        // Sound that lies behind cannot belong to the part; its start is not known yet.
        std::erase_if(otherPackets_, [&](const PacketPtr& packet) {
            return frame->preRoll && packetTime(*packet, *input_->streams[packet->stream_index]) < time - 1;
        });
        ahead_.push_back(std::move(frame));
        if (ahead_.front()->preRoll && static_cast<int>(ahead_.size()) > lookBack) ahead_.pop_front();
        frame = decode();
    }
    throwIfInterrupted();
    if (video_.width == 0) {
        std::string reason = failureText(AVERROR_INVALIDDATA);
        throw Error(name_ + ": no frame can be read: " + reason);
    }
    // Frames and seconds meet where the part begins.
    if (frame != nullptr && job.durationFrames)
        range_.last = lastOf(frame->position.number, *job.durationFrames);
    if (frame != nullptr && job.duration && job.frames) end_ = frame->position.seconds + *job.duration;
    if (frame == nullptr || afterPart(*frame)) {
        throw Error(name_ + " has no frame in the range asked for" +
                    (info_.frameCount > 0 ? ": its frames are 0 to " + std::to_string(info_.frameCount - 1)
                                          : std::string()));
    }
    info_.firstFrame = frame->position.number;
    renderedTime_ = frame->properties().pts;
    const double clipStart = seconds(*firstTime_, video_.timeBase);
    if (range_.last) {
        const std::size_t next = static_cast<std::size_t>(*range_.last) + 1;
        if (times_.empty()) partEnd_ = clipStart + static_cast<double>(next) / info_.frameRate;
        if (next < times_.size()) partEnd_ = seconds(times_[next], video_.timeBase);
    }
    partEnd_ = std::min(partEnd_, clipStart + end_);
    if (range_.first > 0 || start_ > 0) {
        partStart_ = seconds(frame->properties().pts, video_.timeBase);
        timeOrigin_ = partStart_;
    } else if ((input_->iformat->flags & AVFMT_TS_DISCONT) != 0 && input_->start_time != AV_NOPTS_VALUE) {
        // Clocks of broadcasts begin anywhere.
        timeOrigin_ = seconds(input_->start_time, AV_TIME_BASE_Q);
    }
    ahead_.push_back(std::move(frame));
}

void FfmpegReader::describe(const RenderJob& job) {
    info_.width = video_.uprightWidth();
    info_.height = video_.uprightHeight();
    info_.depth = formatDepth(video_.format);
    info_.alpha = formatHasAlpha(video_.format);
    video_.premultiplied = job.premultiplied && info_.alpha;

    constexpr double endless = std::numeric_limits<double>::infinity();
    constexpr double mostFrames = 1e15;
    if (info_.frameCount > 0) noteEnd(info_.frameCount - 1);
    const double last = std::min({info_.frameCount > 0 ? static_cast<double>(info_.frameCount - 1) : endless,
                                  range_.last ? static_cast<double>(*range_.last) : endless,
                                  times_.empty() ? std::ceil(end_ * info_.frameRate - 1e-6) - 1
                                                 : static_cast<double>(framesBefore(end_) - 1)});
    if (last < mostFrames)
        info_.framesExpected = std::max<std::int64_t>(0, std::llround(last) - info_.firstFrame + 1);
}

/// Frames of the clip before a time counted from the first one, where all times are known.
std::int64_t FfmpegReader::framesBefore(double time) const {
    const auto found = std::find_if(times_.begin(), times_.end(), [&](std::int64_t frame) {
        return seconds(frame - times_.front(), video_.timeBase) >= time - 1e-6;
    });
    return found - times_.begin();
}

/// Says where the input ends when that is inside the range asked for.
void FfmpegReader::noteEnd(std::int64_t last) {
    if (!range_.last || *range_.last <= last) return;
    messages_.notice(name_ + " ends with frame " + std::to_string(last) +
                     "; what exists of the range is rendered");
}

std::unique_ptr<SourceFrame> FfmpegReader::read() {
    std::unique_ptr<FfmpegFrame> frame;
    if (!ahead_.empty()) {
        frame = std::move(ahead_.front());
        ahead_.pop_front();
    } else if (!done_) {
        frame = decode();
        if (frame == nullptr && info_.frameCount == 0 && !stop_.requested())
            noteEnd(numbering_.following() - 1);
        if (frame == nullptr || afterPart(*frame)) {
            frame.reset();
            done_ = true;
            passOthersToEnd();
            noteBreak();
        }
    }
    return frame;
}

std::unique_ptr<FfmpegFrame> FfmpegReader::decode() {
    while (decoded_.empty() && !drained_) {
        if (stop_.requested()) return nullptr;
        FramePtr frame = newFrame();
        const int received = avcodec_receive_frame(decoder_.get(), frame.get());
        if (received >= 0) {
            take(std::move(frame));
        } else if (received == AVERROR(EAGAIN)) {
            demux();
        } else if (received == AVERROR_EOF) {
            drained_ = true;
            takeLost(numbering_.rest());
            takeMissing();
        } else {
            noteFailure(received);
        }
    }
    if (decoded_.empty()) return nullptr;
    std::unique_ptr<FfmpegFrame> frame = std::move(decoded_.front());
    decoded_.pop_front();
    return frame;
}

/// Reads packets up to one of the video, which goes into the decoder; after the last one drains it.
void FfmpegReader::demux() {
    while (true) {
        PacketPtr packet = nextPacket();
        if (packet != nullptr && packet->stream_index != stream_) {
            passOn(std::move(packet));
            continue;
        }
        if (packet != nullptr && holdsShownFrame(*packet, decoder_->codec_id)) {
            ++shownPackets_;
            if (packet->pts != AV_NOPTS_VALUE) numbering_.sent(packet->pts);
            if (breaksOff(*packet)) brokenPackets_.insert(packet->pts);
        }
        const int sent = avcodec_send_packet(decoder_.get(), packet.get());
        if (sent < 0) noteFailure(sent);
        return;
    }
}

/// Null at the end.
PacketPtr FfmpegReader::nextPacket() {
    if (inputEnded_) return nullptr;
    PacketPtr packet = newPacket();
    libraryComplaint();
    const int got = av_read_frame(input_.get(), packet.get());
    if (got >= 0) {
        continuous_.correct(*packet, *input_->streams[packet->stream_index]);
        return packet;
    }
    inputEnded_ = true;
    // Some formats complain of a file that is cut off, and call that its end.
    breakReason_ = got == AVERROR_EOF ? libraryComplaint() : failureText(got);
    return nullptr;
}

/// Whether the packet is there in part.
bool FfmpegReader::breaksOff(const AVPacket& packet) const {
    // In broadcasts the mark stands at every joint; their decoders tell what is broken.
    const bool isBroadcast = (input_->iformat->flags & AVFMT_TS_DISCONT) != 0;
    if (!isBroadcast && (packet.flags & AV_PKT_FLAG_CORRUPT) != 0) return true;
    // In clips some cameras leave the end out.
    const std::string_view format = input_->iformat->name;
    const bool isPicture = format == "image2" || format.ends_with("_pipe");
    return isPicture && decoder_->codec_id == AV_CODEC_ID_MJPEG &&
           jpegBreaksOff({packet.data, static_cast<std::size_t>(packet.size)});
}

/// Says behind which frame the input breaks off, where it does.
void FfmpegReader::noteBreak() {
    if (breakReason_.empty() || stop_.requested()) return;
    const std::string what = name_ + ": the file breaks off behind frame " +
                             std::to_string(numbering_.following() - 1) + ": " + breakReason_;
    if (strict_) throw Error(what);
    messages_.warning(what);
}

void FfmpegReader::noteFailure(int code) {
    numbering_.failed();
    failure_ = failureText(code);
}

void FfmpegReader::takeLost(const std::vector<FrameNumbering::Lost>& lost) {
    for (const FrameNumbering::Lost& frame : lost) {
        auto placeholder = std::make_unique<LostFrame>(frame.time, failure_);
        place(*placeholder, frame.number, frame.time, Interlacing::Progressive);
        decoded_.push_back(std::move(placeholder));
    }
}

/// What the container announced and the file does not hold any more.
void FfmpegReader::takeMissing() {
    if (shownPackets_ >= announcedFrames_) return;
    failure_ = "the file ends before it";
    breakReason_.clear();  // the frames say it
    std::vector<FrameNumbering::Lost> missing;
    const std::int64_t usual = av_rescale_q(1, av_inv_q(video_.frameRate), video_.timeBase);
    for (std::int64_t number = numbering_.following(); number < announcedFrames_; ++number) {
        missing.push_back({number, nextTime_});
        nextTime_ += usual;
        // A part may end long before.
        if (range_.last && number > *range_.last) break;
    }
    takeLost(missing);
}

void FfmpegReader::take(FramePtr frame) {
    const bool first = video_.width == 0;
    if (first) setProperties(*frame);
    std::int64_t time = frame->best_effort_timestamp;
    if (time == AV_NOPTS_VALUE) time = nextTime_;
    const std::int64_t usual = av_rescale_q(1, av_inv_q(video_.frameRate), video_.timeBase);
    nextTime_ = time + (frame->pkt_duration > 0 ? frame->pkt_duration : usual);
    frame->pts = time;

    Interlacing stored = interlacingOf(*frame);
    const AVCodecDescriptor* codec = avcodec_descriptor_get(decoder_->codec_id);
    // Many formats of single pictures leave it to the container.
    if (stored == Interlacing::Progressive && codec != nullptr && (codec->props & AV_CODEC_PROP_INTRA_ONLY))
        stored = interlacingOf(input_->streams[stream_]->codecpar->field_order);
    stored = forcedInterlacing_.value_or(stored);
    frame->interlaced_frame = stored != Interlacing::Progressive ? 1 : 0;
    frame->top_field_first = stored == Interlacing::TopFieldFirst ? 1 : 0;

    const FrameNumbering::Numbered numbered = numbering_.next(time);
    if (!firstTime_) firstTime_ = numbered.lost.empty() ? time : numbered.lost.front().time;
    takeLost(numbered.lost);
    const bool impaired = frame->decode_error_flags != 0 || (frame->flags & AV_FRAME_FLAG_CORRUPT) != 0 ||
                          brokenPackets_.erase(time) > 0;
    auto decoded = std::make_unique<DecodedFrame>(std::move(frame), video_);
    decoded->impaired = impaired;
    place(*decoded, numbered.number, time, uprightInterlacing(stored, video_));
    if (first) video_.interlacing = decoded->position.interlacing;
    decoded_.push_back(std::move(decoded));
}

void FfmpegReader::setProperties(const AVFrame& frame) {
    const AVStream& stream = *input_->streams[stream_];
    const AVCodecParameters& tags = *stream.codecpar;
    FramePtr tagged(av_frame_clone(&frame));
    if (tagged == nullptr) throw std::bad_alloc();
    if (frame.color_range == AVCOL_RANGE_UNSPECIFIED) tagged->color_range = tags.color_range;
    if (frame.colorspace == AVCOL_SPC_UNSPECIFIED) tagged->colorspace = tags.color_space;
    if (frame.color_primaries == AVCOL_PRI_UNSPECIFIED) tagged->color_primaries = tags.color_primaries;
    if (frame.color_trc == AVCOL_TRC_UNSPECIFIED) tagged->color_trc = tags.color_trc;
    tagged->sample_aspect_ratio = av_guess_sample_aspect_ratio(input_.get(), const_cast<AVStream*>(&stream),
                                                               const_cast<AVFrame*>(&frame));

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
    } else if (pipe_ == nullptr) {
        video_.orientation = exifOrientation(exifOrientationTag(std::filesystem::path(name_)));
    }
}

void FfmpegReader::place(SourceFrame& frame, std::int64_t number, std::int64_t time,
                         Interlacing interlacing) const {
    frame.position = {number, info_.frameCount, seconds(time - firstTime_.value_or(time), video_.timeBase),
                      info_.frameRate, interlacing};
}

bool FfmpegReader::beforePart(const SourceFrame& frame) const {
    return frame.position.number < range_.first || frame.position.seconds < start_ - 1e-6;
}

bool FfmpegReader::afterPart(const SourceFrame& frame) const {
    return (range_.last && frame.position.number > *range_.last) || frame.position.seconds >= end_ - 1e-6;
}

void FfmpegReader::passOn(PacketPtr packet) {
    if (sink_ == nullptr) {
        otherPackets_.push_back(std::move(packet));
        return;
    }
    const AVStream& stream = *input_->streams[packet->stream_index];
    const double begin = packetTime(*packet, stream);
    // Each packet belongs to the part where it begins, so that parts join.
    if (begin == noTime || (begin >= partStart_ - 1e-6 && begin < partEnd_ - 1e-6)) sink_(std::move(packet));
}

std::optional<std::int64_t> FfmpegReader::firstTimeOf(const AVStream& stream) const {
    for (const PacketPtr& packet : otherPackets_) {
        if (packet->stream_index == stream.index && packet->pts != AV_NOPTS_VALUE) return packet->pts;
    }
    return std::nullopt;
}

void FfmpegReader::connect(PacketSink sink) {
    sink_ = std::move(sink);
    for (PacketPtr& packet : otherPackets_) passOn(std::move(packet));
    otherPackets_.clear();
}

void FfmpegReader::passOthers(double until) {
    while (!stop_.requested()) {
        PacketPtr packet = nextPacket();
        if (packet == nullptr) return;
        const double time = packetTime(*packet, *input_->streams[packet->stream_index]);
        if (packet->stream_index != stream_) passOn(std::move(packet));
        if (time > until) return;
    }
}

void FfmpegReader::passOthersToEnd() {
    constexpr double interleaving = 2;  // seconds by which streams of a file may lie apart
    passOthers(partEnd_ + interleaving);
}

}  // namespace vireo
