// SPDX-License-Identifier: MIT
#include "app/media/describe_media.h"

#include "app/media/pixel_format.h"

namespace vireo {
namespace {

std::string textOf(const char* text) { return text != nullptr ? text : ""; }

std::string ratioText(AVRational ratio, char between) {
    if (ratio.num <= 0 || ratio.den <= 0) return {};
    av_reduce(&ratio.num, &ratio.den, ratio.num, ratio.den, std::numeric_limits<int>::max());
    return std::to_string(ratio.num) + between + std::to_string(ratio.den);
}

const char* rangeName(AVColorRange range) {
    return range == AVCOL_RANGE_MPEG ? "limited" : range == AVCOL_RANGE_JPEG ? "full" : nullptr;
}

ColorDescription colorsOf(AVColorSpace matrix, AVColorRange range, AVColorPrimaries primaries,
                          AVColorTransferCharacteristic transfer) {
    ColorDescription colors;
    if (matrix != AVCOL_SPC_UNSPECIFIED) colors.matrix = textOf(av_color_space_name(matrix));
    colors.range = textOf(rangeName(range));
    if (primaries != AVCOL_PRI_UNSPECIFIED) colors.primaries = textOf(av_color_primaries_name(primaries));
    if (transfer != AVCOL_TRC_UNSPECIFIED) colors.transfer = textOf(av_color_transfer_name(transfer));
    return colors;
}

/// How samples stand for colours; nothing for those that are colours.
ColorDescription codingOf(AVPixelFormat format, const ColorCoding& coding) {
    if (formatIsRgb(format)) return {};
    return colorsOf(coding.matrix, coding.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG,
                    AVCOL_PRI_UNSPECIFIED, AVCOL_TRC_UNSPECIFIED);
}

TrackDescription trackOf(const AVStream& stream) {
    const AVCodecParameters& parameters = *stream.codecpar;
    TrackDescription track;
    track.index = stream.index;
    track.kind = textOf(av_get_media_type_string(parameters.codec_type));
    track.codec = avcodec_get_name(parameters.codec_id);
    const AVDictionaryEntry* language = av_dict_get(stream.metadata, "language", nullptr, 0);
    const bool isKnown = language != nullptr && std::string_view(language->value) != "und";
    if (isKnown) track.language = language->value;
    if (parameters.codec_type == AVMEDIA_TYPE_AUDIO) {
        track.channels = parameters.ch_layout.nb_channels;
        track.sampleRate = parameters.sample_rate;
    }
    return track;
}

}  // namespace

InputDescription describeInput(const RenderJob& job, const FfmpegSource& source) {
    const VideoProperties& video = source.video;
    const SourceInfo& info = source.reader->info();
    InputDescription input;
    input.name = job.input;
    input.codec = avcodec_get_name(video.codec);
    input.pixelFormat = textOf(av_get_pix_fmt_name(video.format));
    input.width = info.width;
    input.height = info.height;
    input.pixelAspect = ratioText(video.uprightPixelAspect(), ':');
    input.isTurned = !video.orientation.upright();
    input.depth = info.depth;
    input.alpha = info.alpha;
    input.premultiplied = video.premultiplied;
    input.interlacing = video.interlacing;
    input.frameRate = ratioText(video.frameRate, '/');
    input.framesPerSecond = info.frameRate;
    input.frames = info.frameCount;
    input.firstFrame = info.firstFrame;
    input.framesExpected = info.framesExpected;
    input.tags = colorsOf(video.matrix, video.range, video.primaries, video.transfer);
    input.colors = codingOf(video.format, video.coding);
    if (source.container == nullptr) {
        input.format = "pictures";
        return input;
    }
    const AVFormatContext& container = source.container->input();
    input.format = container.iformat->name;
    for (unsigned i = 0; i < container.nb_streams; ++i)
        input.tracks.push_back(trackOf(*container.streams[i]));
    input.chapters = static_cast<int>(container.nb_chapters);
    return input;
}

OutputDescription describeOutput(const RenderJob& job, const FfmpegSource& source,
                                 const EncoderChoice& choice) {
    OutputDescription output;
    const CodecContextPtr encoder = newEncoder(choice, source.video);
    output.name = job.output;
    if (choice.container != nullptr) output.format = choice.container->name;
    output.encoder = choice.codec->name;
    output.pixelFormat = textOf(av_get_pix_fmt_name(choice.format));
    output.encoderOptions = choice.defaults;
    output.encoderOptions.insert(output.encoderOptions.end(), job.encoderOptions.begin(),
                                 job.encoderOptions.end());
    output.width = encoder->width;
    output.height = encoder->height;
    output.depth = formatDepth(choice.format);
    output.alpha = choice.alpha;
    output.colors = codingOf(choice.format, choice.coding);
    output.tags =
        colorsOf(encoder->colorspace, encoder->color_range, encoder->color_primaries, encoder->color_trc);
    return output;
}

InputDescription probeInput(const RenderJob& job, const StopRequest& stop, Messages& messages) {
    return describeInput(job, openSource(job, stop, messages));
}

}  // namespace vireo
