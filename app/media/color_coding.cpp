// SPDX-License-Identifier: MIT
#include "app/media/color_coding.h"

#include <cmath>

namespace vireo {
namespace {

struct Weights {
    double red;
    double blue;
    double green() const { return 1 - red - blue; }
};

Weights weights(AVColorSpace matrix) {
    switch (matrix) {
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M: return {0.299, 0.114};
        case AVCOL_SPC_FCC: return {0.30, 0.11};
        case AVCOL_SPC_SMPTE240M: return {0.212, 0.087};
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL: return {0.2627, 0.0593};
        default: return {0.2126, 0.0722};
    }
}

/// What black, the span from black to white, grey and the span of chroma are stored as.
struct Levels {
    double black, lumaSpan, grey, chromaSpan, highest;
};

Levels levels(bool fullRange, int depth, int shift) {
    const double unit = std::ldexp(1.0, depth - 8 + shift);
    const double highest = (std::ldexp(1.0, depth) - 1) * std::ldexp(1.0, shift);
    if (fullRange) return {0, highest, 128 * unit, highest, highest};
    return {16 * unit, 219 * unit, 128 * unit, 224 * unit, highest};
}

}  // namespace

ColorCoding colorCoding(AVColorSpace matrix, AVColorRange range, AVPixelFormat format, int lines) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    const bool grey = description->nb_components < 3;
    const bool jpegFormat = format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P ||
                            format == AV_PIX_FMT_YUVJ444P || format == AV_PIX_FMT_YUVJ440P ||
                            format == AV_PIX_FMT_YUVJ411P;
    ColorCoding coding;
    coding.matrix = matrix;
    if (matrix == AVCOL_SPC_UNSPECIFIED || matrix == AVCOL_SPC_RESERVED || matrix == AVCOL_SPC_RGB)
        coding.matrix = isStandardDefinition(lines) ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
    coding.fullRange = range == AVCOL_RANGE_JPEG || jpegFormat || (grey && range == AVCOL_RANGE_UNSPECIFIED);
    return coding;
}

YuvToRgb yuvToRgb(const ColorCoding& coding, int sampleDepth, int sampleShift, int channelDepth) {
    const Weights w = weights(coding.matrix);
    const Levels in = levels(coding.fullRange, sampleDepth, sampleShift);
    const double white = std::ldexp(1.0, channelDepth) - 1;
    const double luma = white / in.lumaSpan;
    const double chroma = white / in.chromaSpan;
    const double redV = 2 * (1 - w.red) * chroma;
    const double blueU = 2 * (1 - w.blue) * chroma;
    const double greenU = -2 * w.blue * (1 - w.blue) / w.green() * chroma;
    const double greenV = -2 * w.red * (1 - w.red) / w.green() * chroma;
    const double black = -luma * in.black;
    return {static_cast<float>(luma),
            static_cast<float>(redV),
            static_cast<float>(greenU),
            static_cast<float>(greenV),
            static_cast<float>(blueU),
            static_cast<float>(black - redV * in.grey),
            static_cast<float>(black - (greenU + greenV) * in.grey),
            static_cast<float>(black - blueU * in.grey),
            static_cast<float>(white / in.highest)};
}

RgbToYuv rgbToYuv(const ColorCoding& coding, int channelDepth, int sampleDepth) {
    const Weights w = weights(coding.matrix);
    const Levels out = levels(coding.fullRange, sampleDepth, 0);
    const double white = std::ldexp(1.0, channelDepth) - 1;
    const double luma = out.lumaSpan / white;
    const double u = out.chromaSpan / white / (2 * (1 - w.blue));
    const double v = out.chromaSpan / white / (2 * (1 - w.red));
    return {static_cast<float>(luma * w.red),        static_cast<float>(luma * w.green()),
            static_cast<float>(luma * w.blue),       static_cast<float>(out.black + 0.5),
            static_cast<float>(-u * w.red),          static_cast<float>(-u * w.green()),
            static_cast<float>(u * (1 - w.blue)),    static_cast<float>(out.grey + 0.5),
            static_cast<float>(v * (1 - w.red)),     static_cast<float>(-v * w.green()),
            static_cast<float>(-v * w.blue),         static_cast<float>(out.grey + 0.5),
            static_cast<float>(out.highest / white), static_cast<float>(out.highest)};
}

}  // namespace vireo
