// SPDX-License-Identifier: MIT
#include "app/media/encoder_choice.h"

#include "app/base/files.h"
#include "app/media/pass_log.h"
#include "app/media/picture_to_frame.h"
#include "app/media/pixel_format.h"
#include "engine/error.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace vireo {
namespace {

constexpr OutputKind outputKinds[] = {
    {"mp4", "mp4", "libx264", nullptr},
    {"m4v", "mp4", "libx264", nullptr},
    {"mov", "mov", "libx264", "prores_ks"},
    {"mkv", "matroska", "libx264", "ffv1"},
    {"matroska", "matroska", "libx264", "ffv1"},
    {"webm", "webm", "libvpx-vp9", nullptr},
    {"avi", "avi", "mpeg4", "ffv1"},
    {"ts", "mpegts", "libx264", nullptr},
    {"mts", "mpegts", "libx264", nullptr},
    {"m2ts", "mpegts", "libx264", nullptr},
    {"mpegts", "mpegts", "libx264", nullptr},
    {"flv", "flv", "libx264", nullptr},
    {"nut", "nut", "ffv1", nullptr},
    {"y4m", "yuv4mpegpipe", "wrapped_avframe", nullptr},
    {"yuv4mpegpipe", "yuv4mpegpipe", "wrapped_avframe", nullptr},
    {"png", nullptr, "png", nullptr},
    {"jpg", nullptr, "mjpeg", nullptr},
    {"jpeg", nullptr, "mjpeg", nullptr},
    {"jpe", nullptr, "mjpeg", nullptr},
    {"tif", nullptr, "tiff", nullptr},
    {"tiff", nullptr, "tiff", nullptr},
    {"webp", nullptr, "libwebp", nullptr},
    {"bmp", nullptr, "bmp", nullptr},
    {"tga", nullptr, "targa", nullptr},
    {"ppm", nullptr, "ppm", nullptr},
    {"pgm", nullptr, "pgm", nullptr},
    {"pnm", nullptr, "ppm", nullptr},
    {"pam", nullptr, "pam", nullptr},
    {"exr", nullptr, "exr", nullptr},
    {"dpx", nullptr, "dpx", nullptr},
    {"jp2", nullptr, "jpeg2000", nullptr},
    {"jxl", nullptr, "libjxl", nullptr},
    {"sgi", nullptr, "sgi", nullptr},
    {"pcx", nullptr, "pcx", nullptr},
    {"qoi", nullptr, "qoi", nullptr},
};

/// What makes a good picture where nothing was asked for: near to what the eye tells from the source.
struct QualityDefault {
    std::string_view encoder;
    std::array<std::pair<const char*, const char*>, 4> options;
};

constexpr QualityDefault qualityDefaults[] = {
    {"libx264", {{{"crf", "18"}}}},
    {"libx264rgb", {{{"crf", "18"}}}},
    {"libx265", {{{"crf", "20"}}}},
    {"libvpx-vp9", {{{"crf", "24"}, {"b", "0"}, {"row-mt", "1"}, {"cpu-used", "2"}}}},
    {"libvpx", {{{"crf", "8"}, {"b", "10M"}}}},
    {"libsvtav1", {{{"crf", "25"}}}},
    {"libaom-av1", {{{"crf", "25"}, {"b", "0"}, {"cpu-used", "6"}, {"row-mt", "1"}}}},
    {"libwebp", {{{"quality", "90"}}}},
    {"libwebp_anim", {{{"quality", "90"}}}},
    {"prores_ks", {{{"vendor", "apl0"}}}},
    {"ffv1", {{{"level", "3"}, {"slicecrc", "1"}}}},
    {"tiff", {{{"compression_algo", "deflate"}}}},
};

/// What --quality means to an encoder that has a scale of its own.
struct QualityScale {
    std::string_view encoder;
    const char* option;
    double worst, best;
    int digits;
    std::pair<const char*, const char*> with;
};

constexpr QualityScale qualityScales[] = {
    {"libx264", "crf", 51, 1, 1, {}},
    {"libx264rgb", "crf", 51, 1, 1, {}},
    {"libx265", "crf", 51, 1, 1, {}},
    {"libvpx-vp9", "crf", 63, 3, 0, {"b", "0"}},
    {"libvpx", "crf", 63, 4, 0, {"b", "100M"}},
    {"libsvtav1", "crf", 63, 3, 0, {}},
    {"libaom-av1", "crf", 63, 3, 0, {"b", "0"}},
    {"libwebp", "quality", 0, 100, 0, {}},
    {"libwebp_anim", "quality", 0, 100, 0, {}},
    {"libjxl", "distance", 15, 0.1, 2, {}},
    {"h264_nvenc", "cq", 51, 1, 0, {"b", "0"}},
    {"hevc_nvenc", "cq", 51, 1, 0, {"b", "0"}},
    {"av1_nvenc", "cq", 51, 1, 0, {"b", "0"}},
    {"h264_vaapi", "qp", 51, 1, 0, {}},
    {"hevc_vaapi", "qp", 51, 1, 0, {}},
};

/// Encoders of fixed quantisers.
constexpr std::string_view quantiserEncoders[] = {"mpeg4", "mpeg2video", "mpeg1video", "mjpeg", "msmpeg4v2",
                                                  "wmv2",  "libxvid",    "h263p",      "flv"};

std::string lowerExtension(const std::string& path) {
    std::string extension = utf8Of(pathOf(path).extension());
    if (!extension.empty()) extension.erase(0, 1);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

/// The ending of the output's name; for standard output, its --format.
std::string outputFormat(const RenderJob& job) {
    if (job.output != "-") return lowerExtension(job.output);
    return job.format.empty() ? "matroska" : job.format;
}

const OutputKind* kindOf(std::string_view extension) {
    for (const OutputKind& kind : outputKinds) {
        if (kind.extension == extension) return &kind;
    }
    return nullptr;
}

/// Null where there is none.
const AVCodec* findEncoder(const std::string& name) {
    const AVCodec* codec = avcodec_find_encoder_by_name(name.c_str());
    if (codec != nullptr) return codec;
    // A codec's name means its best encoder.
    const AVCodecDescriptor* codecKind = avcodec_descriptor_get_by_name(name.c_str());
    return codecKind == nullptr ? nullptr : avcodec_find_encoder(codecKind->id);
}

bool worksOnHardware(const AVCodec& codec) {
    return (codec.capabilities & (AV_CODEC_CAP_HARDWARE | AV_CODEC_CAP_HYBRID)) != 0;
}

const AVCodec* encoderNamed(const std::string& name) {
    const AVCodec* codec = findEncoder(name);
    if (codec == nullptr || codec->type != AVMEDIA_TYPE_VIDEO)
        throw Error(Fault::Usage, "there is no video encoder named " + name);
    return codec;
}

bool isFullRangeFormat(AVPixelFormat format) {
    const char* name = av_get_pix_fmt_name(format);
    return name != nullptr && std::strncmp(name, "yuvj", 4) == 0;
}

/// What a pixel format should be like.
struct Wish {
    bool alpha;
    bool rgb;
    int chromaW, chromaH;
    int depth;
    bool fullRange;
    bool evenOnly;  ///< Halved chroma needs even sizes.
    int width, height;
};

/// What it costs a format not to be as wished, from the worst to the least.
namespace cost {
constexpr int grey = 10000;
constexpr int withoutAlpha = 5000;
constexpr int bitTooFew = 1000;
constexpr int otherModel = 500;  ///< RGB for YUV or the other way round.
constexpr int needlessAlpha = 300;
constexpr int chromaHalved = 200;  ///< Once more than wished.
constexpr int chromaKept = 50;     ///< Once less.
constexpr int otherRange = 20;
constexpr int bitTooMany = 10;
constexpr int interleaved = 5;
}  // namespace cost

/// How far a format is from the wish; negative where it cannot be used.
int distance(AVPixelFormat format, const Wish& wish) {
    const AVPixFmtDescriptor* d = av_pix_fmt_desc_get(format);
    if (d == nullptr || !convertsTo(format) || format == AV_PIX_FMT_PAL8) return -1;
    const bool rgb = formatIsRgb(format);
    const bool halved = !rgb && d->nb_components >= 3;
    if (halved && wish.evenOnly &&
        ((d->log2_chroma_w > 0 && wish.width % 2 != 0) || (d->log2_chroma_h > 0 && wish.height % 2 != 0)))
        return -1;
    const int depth = d->comp[0].depth;
    int result = 0;
    if (d->nb_components < 3) result += cost::grey;
    if (wish.alpha != formatHasAlpha(format)) result += wish.alpha ? cost::withoutAlpha : cost::needlessAlpha;
    if (depth < wish.depth) result += cost::bitTooFew * (wish.depth - depth);
    if (depth > wish.depth) result += cost::bitTooMany * (depth - wish.depth);
    if (rgb != wish.rgb) result += cost::otherModel;
    if (halved) {
        const auto apart = [](int have, int want) {
            return have > want ? cost::chromaHalved * (have - want) : cost::chromaKept * (want - have);
        };
        result += apart(d->log2_chroma_w, wish.chromaW) + apart(d->log2_chroma_h, wish.chromaH);
        if (isFullRangeFormat(format) != wish.fullRange) result += cost::otherRange;
    }
    // Of several that hold the same, those whose samples lie plainly.
    if ((d->flags & AV_PIX_FMT_FLAG_PLANAR) == 0 && !rgb) result += cost::interleaved;
    if (halved && d->comp[1].plane == d->comp[2].plane) result += cost::interleaved;
    if ((d->flags & AV_PIX_FMT_FLAG_BE) != 0) result += 1;
    return result;
}

AVPixelFormat nearestFormat(const AVCodec& codec, const Wish& wish) {
    constexpr AVPixelFormat anything[] = {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUV444P,
                                          AV_PIX_FMT_NONE};
    AVPixelFormat best = AV_PIX_FMT_NONE;
    int least = 0;
    for (const AVPixelFormat* f = codec.pix_fmts != nullptr ? codec.pix_fmts : anything;
         *f != AV_PIX_FMT_NONE; ++f) {
        const int d = distance(*f, wish);
        if (d >= 0 && (best == AV_PIX_FMT_NONE || d < least)) {
            best = *f;
            least = d;
        }
    }
    if (best == AV_PIX_FMT_NONE)
        throw Error(std::string("the encoder ") + codec.name + " takes no pixel format that fits");
    return best;
}

/// How frames get to an encoder that takes those of a device alone; null where it takes others.
const AVCodecHWConfig* hardwareOf(const AVCodec& codec) {
    for (const AVPixelFormat* f = codec.pix_fmts; f != nullptr && *f != AV_PIX_FMT_NONE; ++f) {
        if (convertsTo(*f)) return nullptr;
    }
    const AVCodecHWConfig* config = nullptr;
    for (int i = 0; (config = avcodec_get_hw_config(&codec, i)) != nullptr; ++i) {
        if ((config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_FRAMES_CTX) != 0) return config;
    }
    return nullptr;
}

AVPixelFormat wantedFormat(const RenderJob& job, const AVCodec& codec) {
    const AVPixelFormat format = av_get_pix_fmt(job.pixelFormat.c_str());
    if (format == AV_PIX_FMT_NONE || !convertsTo(format))
        throw Error(Fault::Usage, "there is no pixel format named " + job.pixelFormat);
    if (hardwareOf(codec) != nullptr) return format;
    for (const AVPixelFormat* f = codec.pix_fmts; f != nullptr && *f != format; ++f) {
        if (*f == AV_PIX_FMT_NONE)
            throw Error(std::string("the encoder ") + codec.name + " does not take the pixel format " +
                            job.pixelFormat,
                        2);
    }
    return format;
}

/// Encoders whose streams say nothing of a range are read as limited.
bool keepsRange(AVCodecID codec) {
    return codec != AV_CODEC_ID_MPEG4 && codec != AV_CODEC_ID_MPEG2VIDEO && codec != AV_CODEC_ID_MPEG1VIDEO &&
           codec != AV_CODEC_ID_THEORA && codec != AV_CODEC_ID_PRORES;
}

void chooseFormat(EncoderChoice& choice, const RenderJob& job, const VideoProperties& video, int depth,
                  bool alpha) {
    const AVCodec& codec = *choice.codec;
    const AVCodecDescriptor* description = avcodec_descriptor_get(codec.id);
    const AVPixFmtDescriptor* source = av_pix_fmt_desc_get(video.format);
    const bool sourceRgb = formatIsRgb(video.format) || source->nb_components < 3;
    const bool picture = choice.container == nullptr;
    const bool lossy = description != nullptr && (description->props & AV_CODEC_PROP_LOSSY) != 0;

    Wish wish{.alpha = alpha,
              .rgb = sourceRgb && (picture || !lossy),
              .chromaW = source->log2_chroma_w,
              .chromaH = source->log2_chroma_h,
              .depth = depth,
              .fullRange = (!sourceRgb && video.coding.fullRange) || codec.id == AV_CODEC_ID_MJPEG,
              .evenOnly =
                  codec.id == AV_CODEC_ID_H264 || codec.id == AV_CODEC_ID_HEVC || codec.id == AV_CODEC_ID_AV1,
              .width = video.uprightWidth(),
              .height = video.uprightHeight()};
    // What is made for players takes the chroma that they all read; what is made to work on keeps it whole.
    if (sourceRgb && lossy && !picture && codec.id != AV_CODEC_ID_PRORES) wish.chromaW = wish.chromaH = 1;
    if (video.orientation.transpose) std::swap(wish.chromaW, wish.chromaH);
    choice.hardware = hardwareOf(codec);
    if (choice.hardware != nullptr && job.pixelFormat.empty()) {
        choice.format = depth > 8 && codec.id != AV_CODEC_ID_H264 ? AV_PIX_FMT_P010 : AV_PIX_FMT_NV12;
    } else {
        choice.format = job.pixelFormat.empty() ? nearestFormat(codec, wish) : wantedFormat(job, codec);
    }
    choice.alpha = formatHasAlpha(choice.format);

    choice.coding = video.coding;
    if (sourceRgb) choice.coding = {AVCOL_SPC_BT709, false};
    if (!keepsRange(codec.id)) choice.coding.fullRange = false;
    if (codec.id == AV_CODEC_ID_MJPEG || codec.id == AV_CODEC_ID_WEBP)
        choice.coding = {AVCOL_SPC_SMPTE170M, codec.id == AV_CODEC_ID_MJPEG};
    if (isFullRangeFormat(choice.format)) choice.coding.fullRange = true;
    if (av_pix_fmt_desc_get(choice.format)->nb_components < 3) choice.coding.fullRange = true;
}

bool hasQuantiser(std::string_view encoder) {
    return std::find(std::begin(quantiserEncoders), std::end(quantiserEncoders), encoder) !=
           std::end(quantiserEncoders);
}

void setQuantiser(EncoderChoice& choice, int quality) {
    choice.defaults.emplace_back("flags", "+qscale");
    choice.defaults.emplace_back("global_quality", std::to_string(quality));
}

/// The encoder's own settings for a quality from 0 to 100.
void chooseQuality(EncoderChoice& choice, int quality) {
    constexpr double coarsest = 31, finest = 2;
    constexpr const char* proresProfiles[] = {"proxy", "lt", "standard", "hq"};
    const std::string encoder = choice.codec->name;
    const AVCodecDescriptor* description = avcodec_descriptor_get(choice.codec->id);
    const double share = quality / 100.0;
    const auto scale = std::find_if(std::begin(qualityScales), std::end(qualityScales),
                                    [&](const QualityScale& known) { return known.encoder == encoder; });
    if (scale != std::end(qualityScales)) {
        char value[32];
        std::snprintf(value, sizeof value, "%.*f", scale->digits,
                      scale->worst + (scale->best - scale->worst) * share);
        choice.defaults.emplace_back(scale->option, value);
        if (scale->with.first != nullptr) choice.defaults.emplace_back(scale->with);
    } else if (hasQuantiser(encoder)) {
        const double quantiser = coarsest * std::pow(finest / coarsest, share);
        choice.frameQuality = static_cast<int>(std::lround(quantiser * FF_QP2LAMBDA));
        setQuantiser(choice, choice.frameQuality);
    } else if (encoder == "prores_ks") {
        const bool isWhole = choice.alpha || choice.format == AV_PIX_FMT_YUV444P10;
        choice.defaults.emplace_back("profile", !isWhole       ? proresProfiles[std::min(3, quality / 25)]
                                                : quality < 75 ? "4444"
                                                               : "4444xq");
    } else if (description == nullptr || (description->props & AV_CODEC_PROP_LOSSY) == 0) {
        choice.note = {MessageCode::QualityUnused,
                       "--quality makes no difference, since the encoder " + encoder + " loses nothing"};
    } else {
        throw Error(Fault::Usage,
                    "--quality has no scale for the encoder " + encoder + "; --encoder-option sets its own");
    }
}

void chooseDefaults(EncoderChoice& choice, const RenderJob& job, const VideoProperties& video) {
    const auto asked = [&](std::string_view name) {
        return std::any_of(job.encoderOptions.begin(), job.encoderOptions.end(),
                           [&](const auto& option) { return option.first == name; });
    };
    const std::string_view encoder = choice.codec->name;
    if (job.twoPass) {
        constexpr std::string_view able[] = {"libx264", "libx264rgb", "libx265", "libvpx-vp9", "libvpx"};
        if (std::find(std::begin(able), std::end(able), encoder) == std::end(able))
            throw Error(Fault::Usage, "--two-pass is for libx264, libx265, libvpx-vp9 and libvpx, not for " +
                                          std::string(encoder));
        if (!asked("b") || job.quality)
            throw Error(Fault::Usage,
                        "--two-pass spends a bit rate, which --encoder-option b=2M tells, and no --quality");
    }
    // Who sets a rate or a quality of his own has thought of the rest.
    for (const char* name : {"b", "crf", "qp", "global_quality", "quality", "lossless", "x264-params",
                             "x265-params", "profile", "qmin", "qmax"}) {
        if (!asked(name)) continue;
        if (job.quality && !std::string_view(name).ends_with("params"))
            throw Error(Fault::Usage, "--quality goes without the encoder's own " + std::string(name));
        if (!job.quality) return;
    }
    if (job.quality) chooseQuality(choice, *job.quality);
    const auto isChosen = [&](std::string_view name) {
        return std::any_of(choice.defaults.begin(), choice.defaults.end(),
                           [&](const auto& option) { return option.first == name; });
    };
    for (const QualityDefault& defaults : qualityDefaults) {
        if (defaults.encoder != encoder) continue;
        for (const auto& [name, value] : defaults.options) {
            if (name != nullptr && !asked(name) && !isChosen(name)) choice.defaults.emplace_back(name, value);
        }
    }
    if (hasQuantiser(encoder) && !job.quality) setQuantiser(choice, 2 * FF_QP2LAMBDA);
    // The libraries' encoder loses pixels of slices that are next to nothing; of these levels, the first has
    // none.
    constexpr int smallest = 16;
    if (encoder == "ffv1" && (video.width < smallest || video.height < smallest) && !asked("level") &&
        !asked("slices"))
        choice.defaults = {{"level", "1"}};
    if (encoder == "prores_ks" && !job.quality)
        choice.defaults.emplace_back("profile",
                                     choice.alpha || choice.format == AV_PIX_FMT_YUV444P10 ? "4444" : "hq");
}

}  // namespace

std::span<const OutputKind> knownOutputs() { return outputKinds; }

bool writesPictures(const RenderJob& job) {
    const OutputKind* kind = kindOf(outputFormat(job));
    return kind != nullptr && kind->container == nullptr;
}

EncoderChoice chooseVideoEncoder(const RenderJob& job, const VideoProperties& video, int depth) {
    const bool pipe = job.output == "-";
    const std::string name = outputFormat(job);
    const OutputKind* kind = kindOf(name);
    const bool alpha = job.alpha || video.alpha;

    EncoderChoice choice;
    if (kind != nullptr && kind->container != nullptr) {
        choice.container = av_guess_format(kind->container, nullptr, nullptr);
    } else if (pipe) {
        choice.container = av_guess_format(name.c_str(), nullptr, nullptr);
    } else {
        choice.container = av_guess_format(nullptr, job.output.c_str(), nullptr);
    }
    if (choice.container == nullptr) {
        throw Error(
            pipe ? "there is no format named " + name : "the name " + job.output + " does not tell a format",
            2);
    }
    const char* usual = nullptr;
    if (!job.encoder.empty()) {
        choice.codec = encoderNamed(job.encoder);
    } else if (kind != nullptr) {
        usual = alpha && kind->alphaEncoder != nullptr ? kind->alphaEncoder : kind->encoder;
        choice.codec = avcodec_find_encoder_by_name(usual);
    }
    if (choice.codec == nullptr) {
        choice.codec = avcodec_find_encoder(
            av_guess_codec(choice.container, nullptr, job.output.c_str(), nullptr, AVMEDIA_TYPE_VIDEO));
        if (choice.codec == nullptr)
            throw Error(std::string("there is no video encoder for ") + choice.container->long_name);
        if (usual != nullptr)
            choice.note = {MessageCode::EncoderReplaced, std::string("the encoder is ") + choice.codec->name +
                                                             ", since there is no " + usual +
                                                             "; --encoder takes another"};
    }
    chooseFormat(choice, job, video, depth, alpha);
    chooseDefaults(choice, job, video);
    return choice;
}

EncoderChoice choosePictureEncoder(const RenderJob& job, const VideoProperties& video, int depth,
                                   bool alpha) {
    if (job.twoPass) throw Error(Fault::Usage, "--two-pass is for video, and " + job.output + " is none");
    EncoderChoice choice;
    const OutputKind* kind = kindOf(outputFormat(job));
    if (!job.encoder.empty()) {
        choice.codec = encoderNamed(job.encoder);
    } else {
        choice.codec = encoderNamed(kind->encoder);
    }
    chooseFormat(choice, job, video, depth, alpha);
    chooseDefaults(choice, job, video);
    return choice;
}

CodecContextPtr newEncoder(const EncoderChoice& choice, const VideoProperties& video) {
    CodecContextPtr context(avcodec_alloc_context3(choice.codec));
    if (context == nullptr) throw std::bad_alloc();
    context->width = video.uprightWidth();
    context->height = video.uprightHeight();
    context->pix_fmt = choice.format;
    context->sample_aspect_ratio = video.uprightPixelAspect();
    context->time_base = video.timeBase;
    context->framerate = video.frameRate;
    context->color_primaries = video.primaries;
    context->color_trc = video.transfer;
    context->chroma_sample_location = video.chromaLocation;
    context->color_range = video.range;
    context->colorspace = video.matrix;
    if (formatIsRgb(choice.format)) {
        context->colorspace = AVCOL_SPC_RGB;
        context->color_range = AVCOL_RANGE_JPEG;
    } else if (formatIsRgb(video.format) || choice.coding.matrix != video.coding.matrix ||
               choice.coding.fullRange != video.coding.fullRange) {
        // What the source does not have was chosen here, and so is tagged.
        context->colorspace = choice.coding.matrix;
        context->color_range = choice.coding.fullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    } else if (video.matrix == AVCOL_SPC_UNSPECIFIED &&
               isStandardDefinition(video.height) != isStandardDefinition(video.uprightHeight())) {
        context->colorspace = choice.coding.matrix;
    }
    context->thread_count = 0;
    switch (video.interlacing) {
        case Interlacing::TopFieldFirst: context->field_order = AV_FIELD_TT; break;
        case Interlacing::BottomFieldFirst: context->field_order = AV_FIELD_BB; break;
        default: context->field_order = AV_FIELD_PROGRESSIVE;
    }
    if (video.interlacing != Interlacing::Progressive &&
        (choice.codec->id == AV_CODEC_ID_H264 || choice.codec->id == AV_CODEC_ID_MPEG2VIDEO ||
         choice.codec->id == AV_CODEC_ID_MPEG4 || choice.codec->id == AV_CODEC_ID_PRORES ||
         choice.codec->id == AV_CODEC_ID_DNXHD)) {
        context->flags |= AV_CODEC_FLAG_INTERLACED_DCT;
        if (choice.codec->id == AV_CODEC_ID_MPEG2VIDEO || choice.codec->id == AV_CODEC_ID_MPEG4)
            context->flags |= AV_CODEC_FLAG_INTERLACED_ME;
    }
    return context;
}

namespace {

/// Frames of the device that the encoder works on.
void openDevice(AVCodecContext& context, const EncoderChoice& choice) {
    const std::string what = std::string("the encoder ") + choice.codec->name + " works on a " +
                             av_hwdevice_get_type_name(choice.hardware->device_type) +
                             " device, and there is none that can be used";
    AVBufferRef* opened = nullptr;
    check(av_hwdevice_ctx_create(&opened, choice.hardware->device_type, nullptr, nullptr, 0), what);
    const BufferPtr device(opened);
    BufferPtr frames(av_hwframe_ctx_alloc(device.get()));
    if (frames == nullptr) throw std::bad_alloc();
    auto& pool = *reinterpret_cast<AVHWFramesContext*>(frames->data);
    pool.format = choice.hardware->pix_fmt;
    pool.sw_format = choice.format;
    pool.width = context.width;
    pool.height = context.height;
    pool.initial_pool_size = 32;
    check(av_hwframe_ctx_init(frames.get()), what);
    context.pix_fmt = pool.format;
    context.hw_frames_ctx = frames.release();
}

void preparePass(AVCodecContext& context, const AVCodec& codec, const RenderJob& job, Dictionary& options) {
    context.flags |= job.pass == 1 ? AV_CODEC_FLAG_PASS1 : AV_CODEC_FLAG_PASS2;
    const std::string_view encoder = codec.name;
    if (encoder.starts_with("libx264")) {
        options.set("stats", job.passLog->file());
    } else if (encoder == "libx265") {
        const char* given = options.value("x265-params");
        options.set("x265-params", (given != nullptr ? std::string(given) + ':' : std::string()) +
                                       "pass=" + std::to_string(job.pass) + ":stats=" + job.passLog->file());
    } else if (job.pass == 2) {
        context.stats_in = job.passLog->statistics.data();
    }
}

}  // namespace

bool encodesOnHardware(const RenderJob& job) {
    const AVCodec* const codec = findEncoder(job.encoder);
    return codec != nullptr && worksOnHardware(*codec);
}

void openEncoder(AVCodecContext& context, const EncoderChoice& choice, const RenderJob& job,
                 Dictionary* left) {
    Dictionary own;
    Dictionary& options = left != nullptr ? *left : own;
    for (const auto& [name, value] : choice.defaults) options.set(name, value);
    for (const auto& [name, value] : job.encoderOptions) options.set(name, value);
    captureLibraryMessages();
    if (choice.hardware != nullptr) openDevice(context, choice);
    if (job.pass != 0) preparePass(context, *choice.codec, job, options);
    const int opened = avcodec_open2(&context, choice.codec, options.address());
    if (opened < 0 && worksOnHardware(*choice.codec))
        throw Error(std::string("the encoder ") + choice.codec->name +
                    " works on hardware that cannot be used here: " + failureText(opened));
    if (opened < 0)
        throw Error(std::string("the encoder ") + choice.codec->name +
                    " refuses the settings: " + failureText(opened));
    if (left == nullptr && options.anyName() != nullptr)
        throw Error(
            std::string("the encoder ") + choice.codec->name + " has no option named " + options.anyName(),
            2);
}

}  // namespace vireo
