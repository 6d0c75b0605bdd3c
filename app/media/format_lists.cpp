// SPDX-License-Identifier: MIT
#include "app/media/format_lists.h"

#include "app/media/encoder_choice.h"
#include "app/media/picture_to_frame.h"
#include "app/media/pixel_format.h"

#include <algorithm>
#include <sstream>

namespace vireo {
namespace {

std::vector<std::string> wordsOf(const char* list) {
    std::vector<std::string> words;
    std::istringstream text(list != nullptr ? list : "");
    for (std::string word; std::getline(text, word, ',');) words.push_back(word);
    return words;
}

const OutputKind* kindOf(const std::string& ending) {
    const auto kinds = knownOutputs();
    const auto found = std::find_if(kinds.begin(), kinds.end(),
                                    [&](const OutputKind& kind) { return kind.extension == ending; });
    return found == kinds.end() ? nullptr : &*found;
}

/// Whether a name that ends so is written in that container.
bool means(const std::string& ending, const AVOutputFormat& container) {
    if (const OutputKind* kind = kindOf(ending)) {
        return kind->container != nullptr && av_guess_format(kind->container, nullptr, nullptr) == &container;
    }
    return av_guess_format(nullptr, ("x." + ending).c_str(), nullptr) == &container;
}

ListedFormat containerFormat(const AVOutputFormat& container) {
    ListedFormat format;
    format.name = wordsOf(container.name).front();
    format.description = container.long_name != nullptr ? container.long_name : "";
    const auto addEnding = [&](const std::string& ending) {
        if (means(ending, container) &&
            std::find(format.endings.begin(), format.endings.end(), ending) == format.endings.end())
            format.endings.push_back(ending);
    };
    for (const std::string& ending : wordsOf(container.extensions)) addEnding(ending);
    const AVCodec* encoder = avcodec_find_encoder(container.video_codec);
    if (encoder != nullptr) format.encoder = encoder->name;
    for (const OutputKind& kind : knownOutputs()) {
        if (kind.container == nullptr || av_guess_format(kind.container, nullptr, nullptr) != &container)
            continue;
        // Some entries are words of --format alone.
        if (kind.extension != format.name || !wordsOf(container.extensions).empty())
            addEnding(std::string(kind.extension));
        format.encoder = kind.encoder;
        if (kind.alphaEncoder != nullptr) format.alphaEncoder = kind.alphaEncoder;
    }
    if (format.alphaEncoder.empty()) format.alphaEncoder = format.encoder;
    return format;
}

void addPictureFormats(std::vector<ListedFormat>& formats) {
    for (const OutputKind& kind : knownOutputs()) {
        const AVCodec* encoder = avcodec_find_encoder_by_name(kind.encoder);
        if (kind.container != nullptr || encoder == nullptr) continue;
        const std::string ending(kind.extension);
        if (!formats.empty() && formats.back().isPicture && formats.back().encoder == kind.encoder) {
            formats.back().endings.push_back(ending);
        } else {
            formats.push_back({ending, {ending}, true, kind.encoder, kind.encoder, encoder->long_name});
        }
    }
}

std::string modelOf(AVPixelFormat format) {
    const AVPixFmtDescriptor& description = descriptionOf(format);
    if (formatIsRgb(format)) return "RGB";
    if (description.nb_components < 3) return "grey";
    const int across = 4 >> description.log2_chroma_w;
    return "4:" + std::to_string(across) + ':' + std::to_string(description.log2_chroma_h == 0 ? across : 0);
}

}  // namespace

std::vector<ListedEncoder> listEncoders() {
    std::vector<ListedEncoder> encoders;
    void* position = nullptr;
    while (const AVCodec* codec = av_codec_iterate(&position)) {
        if (av_codec_is_encoder(codec) == 0 || codec->type != AVMEDIA_TYPE_VIDEO) continue;
        ListedEncoder encoder{codec->name,
                              avcodec_get_name(codec->id),
                              codec->long_name != nullptr ? codec->long_name : "",
                              {}};
        for (const AVPixelFormat* f = codec->pix_fmts; f != nullptr && *f != AV_PIX_FMT_NONE; ++f) {
            if (!convertsTo(*f)) continue;
            encoder.pixelFormats.emplace_back(av_get_pix_fmt_name(*f));
            encoder.depth = std::max(encoder.depth, formatDepth(*f));
            encoder.alpha = encoder.alpha || formatHasAlpha(*f);
        }
        // Some take only what lies in a graphics card.
        if (codec->pix_fmts == nullptr || !encoder.pixelFormats.empty())
            encoders.push_back(std::move(encoder));
    }
    std::sort(encoders.begin(), encoders.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return encoders;
}

std::vector<ListedFormat> listFormats() {
    std::vector<ListedFormat> formats;
    void* position = nullptr;
    while (const AVOutputFormat* container = av_muxer_iterate(&position)) {
        // Sound's containers hold covers alone.
        const bool isSound = container->video_codec == AV_CODEC_ID_PNG;
        if ((container->flags & AVFMT_NOFILE) != 0 || container->video_codec == AV_CODEC_ID_NONE || isSound)
            continue;
        ListedFormat format = containerFormat(*container);
        if (!format.encoder.empty()) formats.push_back(std::move(format));
    }
    std::sort(formats.begin(), formats.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    addPictureFormats(formats);
    return formats;
}

std::vector<ListedPixelFormat> listPixelFormats() {
    std::vector<ListedPixelFormat> formats;
    for (const AVPixFmtDescriptor* d = av_pix_fmt_desc_next(nullptr); d != nullptr;
         d = av_pix_fmt_desc_next(d)) {
        const AVPixelFormat format = av_pix_fmt_desc_get_id(d);
        if (convertsTo(format))
            formats.push_back({d->name, modelOf(format), formatDepth(format), formatHasAlpha(format)});
    }
    std::sort(formats.begin(), formats.end(), [](const auto& a, const auto& b) { return a.name < b.name; });
    return formats;
}

std::string codecVersions() {
    const std::pair<const char*, unsigned> libraries[] = {{"libavformat", avformat_version()},
                                                          {"libavcodec", avcodec_version()},
                                                          {"libavutil", avutil_version()},
                                                          {"libswscale", swscale_version()},
                                                          {"libswresample", swresample_version()}};
    std::string text = std::string("FFmpeg ") + av_version_info();
    for (const auto& [name, version] : libraries) {
        text += std::string(", ") + name + ' ' + std::to_string(AV_VERSION_MAJOR(version)) + '.' +
                std::to_string(AV_VERSION_MINOR(version)) + '.' + std::to_string(AV_VERSION_MICRO(version));
    }
    return text + '\n';
}

}  // namespace vireo
