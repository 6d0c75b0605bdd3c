// SPDX-License-Identifier: MIT
#include "app/media/stream_copies.h"

#include "app/media/stream_transcoding.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace vireo {
namespace {

/// Containers that do not tell what they take.
struct Taken {
    std::string_view container;
    AVCodecID codecs[10];
};

constexpr Taken takenSound[] = {
    {"mpegts",
     {AV_CODEC_ID_MP2, AV_CODEC_ID_MP3, AV_CODEC_ID_AAC, AV_CODEC_ID_AC3, AV_CODEC_ID_EAC3, AV_CODEC_ID_DTS,
      AV_CODEC_ID_OPUS, AV_CODEC_ID_TRUEHD, AV_CODEC_ID_DVB_SUBTITLE}},
    {"ogg", {AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS, AV_CODEC_ID_FLAC, AV_CODEC_ID_SPEEX}},
    {"ogv", {AV_CODEC_ID_VORBIS, AV_CODEC_ID_OPUS, AV_CODEC_ID_FLAC, AV_CODEC_ID_SPEEX}},
    {"mxf", {AV_CODEC_ID_PCM_S16LE, AV_CODEC_ID_PCM_S24LE}},
};

bool takes(const AVOutputFormat& container, AVCodecID codec) {
    for (const Taken& taken : takenSound) {
        if (taken.container == container.name)
            return std::find(std::begin(taken.codecs), std::end(taken.codecs), codec) !=
                   std::end(taken.codecs);
    }
    const int answer = avformat_query_codec(&container, codec, FF_COMPLIANCE_NORMAL);
    if (answer >= 0) return answer == 1;
    return codec != AV_CODEC_ID_NONE && (codec == container.audio_codec || codec == container.subtitle_codec);
}

class PacketCopy : public StreamCopy {
public:
    PacketCopy(const FfmpegReader& reader, const AVStream& from, Muxer& muxer)
        : muxer_(muxer),
          base_(from.time_base),
          origin_(std::llround(reader.timeOrigin() / av_q2d(from.time_base))),
          to_(*avformat_new_stream(&muxer.context(), nullptr)) {
        check(avcodec_parameters_copy(to_.codecpar, from.codecpar), "cannot copy a stream");
        to_.codecpar->codec_tag = 0;
        // Sound that begins before 0 to warm its decoder up: Matroska knows that by its length alone.
        const std::string_view container = muxer.context().oformat->name;
        const std::int64_t first = reader.firstTimeOf(from).value_or(0);
        if ((container == "matroska" || container == "webm") && first < 0 && origin_ == 0 &&
            from.codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            to_.codecpar->initial_padding =
                static_cast<int>(av_rescale_q(-first, from.time_base, {1, from.codecpar->sample_rate}));
        }
        to_.time_base = from.time_base;
    }

    void take(PacketPtr packet) override {
        if (packet->pts != AV_NOPTS_VALUE) packet->pts -= origin_;
        if (packet->dts != AV_NOPTS_VALUE) packet->dts -= origin_;
        av_packet_rescale_ts(packet.get(), base_, to_.time_base);
        // Some files repeat or turn back a time; no container takes that.
        if (packet->dts != AV_NOPTS_VALUE) {
            if (packet->dts <= last_) {
                packet->dts = last_ + 1;
                packet->pts = std::max(packet->pts, packet->dts);
            }
            last_ = packet->dts;
        }
        packet->stream_index = to_.index;
        packet->pos = -1;
        muxer_.write(std::move(packet));
    }

private:
    Muxer& muxer_;
    AVRational base_;
    std::int64_t origin_;
    AVStream& to_;
    std::int64_t last_ = std::numeric_limits<std::int64_t>::min();
};

std::string describe(const AVStream& stream) {
    const char* kind = av_get_media_type_string(stream.codecpar->codec_type);
    std::string text = kind != nullptr ? kind : "unknown";
    text += " stream " + std::to_string(stream.index) + " (" + avcodec_get_name(stream.codecpar->codec_id);
    const AVDictionaryEntry* language = av_dict_get(stream.metadata, "language", nullptr, 0);
    if (language != nullptr) text += std::string(", ") + language->value;
    return text + ')';
}

void copyChapters(const FfmpegReader& reader, AVFormatContext& to) {
    const AVFormatContext& from = reader.input();
    for (unsigned i = 0; i < from.nb_chapters; ++i) {
        const AVChapter& chapter = *from.chapters[i];
        const double start = std::max(seconds(chapter.start, chapter.time_base), reader.partStart());
        const double end = std::min(seconds(chapter.end, chapter.time_base), reader.partEnd());
        if (start >= end) continue;
        auto* const copy = static_cast<AVChapter*>(av_mallocz(sizeof(AVChapter)));
        if (copy == nullptr) throw std::bad_alloc();
        copy->id = chapter.id;
        copy->time_base = AV_TIME_BASE_Q;
        copy->start = std::llround((start - reader.timeOrigin()) * AV_TIME_BASE);
        copy->end = std::llround((end - reader.timeOrigin()) * AV_TIME_BASE);
        av_dict_copy(&copy->metadata, chapter.metadata, 0);
        int count = static_cast<int>(to.nb_chapters);
        av_dynarray_add(&to.chapters, &count, copy);
        to.nb_chapters = static_cast<unsigned>(count);
    }
}

}  // namespace

void copyTags(AVDictionary* from, AVDictionary** to) {
    constexpr std::string_view wrong[] = {"encoder",           "rotate",   "major_brand", "minor_version",
                                          "compatible_brands", "timecode", "alpha_mode"};
    constexpr std::string_view statistics[] = {"BPS", "DURATION", "NUMBER_OF_", "_STATISTICS_"};
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(from, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        const std::string_view key = tag->key;
        if (std::find(std::begin(wrong), std::end(wrong), key) != std::end(wrong)) continue;
        if (std::any_of(std::begin(statistics), std::end(statistics),
                        [&](std::string_view prefix) { return key.starts_with(prefix); }))
            continue;
        av_dict_set(to, tag->key, tag->value, 0);
    }
}

StreamCopies::StreamCopies(const FfmpegReader& reader, Muxer& muxer, bool noAudio, Messages& messages) {
    const AVFormatContext& from = reader.input();
    AVFormatContext& to = muxer.context();
    const AVOutputFormat& container = *to.oformat;
    copies_.resize(from.nb_streams);
    fates_.assign(from.nb_streams, TrackFate::LeftOut);
    fates_[static_cast<std::size_t>(reader.videoStream())] = TrackFate::Rendered;
    std::string leftOut;
    std::string converted;
    for (unsigned i = 0; i < from.nb_streams; ++i) {
        const AVStream& stream = *from.streams[i];
        const AVMediaType type = stream.codecpar->codec_type;
        if (static_cast<int>(i) == reader.videoStream() || (type == AVMEDIA_TYPE_AUDIO && noAudio)) continue;

        const unsigned before = to.nb_streams;
        if (type == AVMEDIA_TYPE_AUDIO || type == AVMEDIA_TYPE_SUBTITLE) {
            if (takes(container, stream.codecpar->codec_id)) {
                copies_[i] = std::make_unique<PacketCopy>(reader, stream, muxer);
                fates_[i] = TrackFate::Copied;
            } else {
                copies_[i] = type == AVMEDIA_TYPE_AUDIO
                                 ? transcodeSound(stream, muxer, reader.timeOrigin())
                                 : transcodeSubtitles(stream, muxer, reader.timeOrigin());
                if (copies_[i] != nullptr) fates_[i] = TrackFate::Converted;
                if (copies_[i] != nullptr) converted += (converted.empty() ? "" : ", ") + describe(stream);
            }
        }
        if (copies_[i] == nullptr) {
            leftOut += (leftOut.empty() ? "" : ", ") + describe(stream);
            continue;
        }
        AVStream& added = *to.streams[before];
        copyTags(stream.metadata, &added.metadata);
        added.disposition = stream.disposition;
    }
    copyTags(from.metadata, &to.metadata);
    copyChapters(reader, to);
    const std::string name = container.name;
    if (!converted.empty())
        messages.notice(MessageCode::TracksConverted,
                        "converted, since " + name + " does not hold it as it is: " + converted);
    if (!leftOut.empty())
        messages.notice(MessageCode::TracksLeftOut,
                        "left out, since " + name + " does not hold it: " + leftOut);
}

void StreamCopies::take(PacketPtr packet) {
    const auto index = static_cast<std::size_t>(packet->stream_index);
    if (index < copies_.size() && copies_[index] != nullptr) copies_[index]->take(std::move(packet));
}

void StreamCopies::finish() {
    for (const auto& copy : copies_) {
        if (copy != nullptr) copy->finish();
    }
}

}  // namespace vireo
