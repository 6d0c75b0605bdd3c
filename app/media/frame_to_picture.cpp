// SPDX-License-Identifier: MIT
#include "app/media/frame_to_picture.h"

#include "app/media/pixel_format.h"
#include "app/media/sample_layout.h"
#include "engine/error.h"
#include "engine/pixels/dither.h"

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace vireo {
namespace {

/// The row of chroma that belongs to a row of luma.
int chromaRow(int y, int rowsOfChroma, int shift, bool interlaced) {
    if (!interlaced || shift != 1) return std::min(y >> shift, rowsOfChroma - 1);
    const int field = y & 1;
    const int row = 2 * (y >> 2) + field;
    return row < rowsOfChroma ? row : std::max(row - 2, 0);
}

/// Rows of a chroma component, at the width of luma or half of it; the last row made is kept, since it serves
/// more rows than one.
template <class Sample>
class ChromaRows {
public:
    ChromaRows(const AVFrame& frame, const AVPixFmtDescriptor& format, int component)
        : width_(AV_CEIL_RSHIFT(frame.width, 1)),
          rows_(frame, format, component, AV_CEIL_RSHIFT(frame.width, format.log2_chroma_w)),
          half_(format.log2_chroma_w > 1 ? static_cast<std::size_t>(width_) : 0) {}

    const Sample* row(int y) {
        if (y != made_) {
            row_ = rows_.row(y);
            if (!half_.empty()) {
                repeat(row_, half_.data(), width_);
                row_ = half_.data();
            }
            made_ = y;
        }
        return row_;
    }

private:
    static void repeat(const std::uint8_t* half, std::uint8_t* full, int width) {
        colorKernelsTables.chosen().repeat8(half, full, width);
    }
    static void repeat(const std::uint16_t* half, std::uint16_t* full, int width) {
        colorKernelsTables.chosen().repeat16(half, full, width);
    }

    int width_;
    ComponentRows<Sample> rows_;
    std::vector<Sample> half_;
    const Sample* row_ = nullptr;
    int made_ = -1;
};

template <class Sample>
void yuvToPicture(const AVFrame& frame, const AVPixFmtDescriptor& format, Picture& picture,
                  const ColorCoding& coding, bool interlaced, bool dithers) {
    const bool deep = picture.format() != PixKit::formatBgra;
    const bool grey = format.nb_components < 3;
    const bool alpha = (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    YuvToRgb by = yuvToRgb(coding, format.comp[0].depth, format.comp[0].shift, deep ? 16 : 8);
    if (grey) {
        const float neutral = std::ldexp(1.0F, format.comp[0].depth - 1 + format.comp[0].shift);
        const float black = by.red + by.redV * neutral;
        by = {by.luma, 0, 0, 0, 0, black, black, black, by.alpha};
    }
    ComponentRows<Sample> ys(frame, format, 0, frame.width);
    ChromaRows<Sample> us(frame, format, grey ? 0 : 1);
    ChromaRows<Sample> vs(frame, format, grey ? 0 : 2);
    ComponentRows<Sample> as(frame, format, format.nb_components - 1, frame.width);
    const DitherRows dither(8, dithers);
    const int rowsOfChroma = AV_CEIL_RSHIFT(frame.height, format.log2_chroma_h);

    for (int y = 0; y < frame.height; ++y) {
        const Sample* const luma = ys.row(y);
        const int c = chromaRow(y, rowsOfChroma, format.log2_chroma_h, interlaced);
        const YuvRow<Sample> row{luma, grey ? luma : us.row(c), grey ? luma : vs.row(c),
                                 alpha ? as.row(y) : nullptr, !grey && format.log2_chroma_w > 0};
        if constexpr (sizeof(Sample) == 1) {
            colorKernelsTables.chosen().unpack8(row, picture.row(y), frame.width, by);
        } else if (deep) {
            colorKernelsTables.chosen().unpackDeep(row, reinterpret_cast<std::uint16_t*>(picture.row(y)),
                                                   frame.width, by);
        } else {
            colorKernelsTables.chosen().unpack16(row, picture.row(y), frame.width, by, dither.row(y));
        }
    }
}

/// Colours as they are, each scaled from its depth to the picture's.
template <class Sample, class Channel>
void rgbToPicture(const AVFrame& frame, const AVPixFmtDescriptor& format, Picture& picture, bool dithers) {
    constexpr bool floatSamples = std::is_floating_point_v<Sample>;
    constexpr bool floatChannels = std::is_floating_point_v<Channel>;
    constexpr bool dithered = sizeof(Sample) > 1 && sizeof(Channel) == 1;
    constexpr float highest = floatChannels ? 1.0F : sizeof(Channel) == 1 ? 255.0F : 65535.0F;
    const int components = format.nb_components < 3 ? 1 : 3;
    const bool alpha = (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const int depth = format.comp[0].depth;
    const int shift = format.comp[0].shift;
    const float scale = floatSamples ? highest : highest / (std::ldexp(1.0F, depth) - 1);

    std::vector<ComponentRows<Sample>> rows;  // blue, green, red, alpha
    for (int channel : {2, 1, 0})
        rows.emplace_back(frame, format, components == 1 ? 0 : channel, frame.width);
    if (alpha) rows.emplace_back(frame, format, format.nb_components - 1, frame.width);
    const DitherRows dither(dithered ? frame.width : 0, dithers);

    for (int y = 0; y < frame.height; ++y) {
        Channel* const to = reinterpret_cast<Channel*>(picture.row(y));
        for (std::size_t channel = 0; channel < 4; ++channel) {
            if (channel == rows.size()) {
                for (int x = 0; x < frame.width; ++x) to[4 * x + 3] = static_cast<Channel>(highest);
                break;
            }
            const Sample* const from = rows[channel].row(y);
            for (int x = 0; x < frame.width; ++x) {
                if constexpr (sizeof(Sample) == 1 && sizeof(Channel) == 1) {
                    to[4 * x + static_cast<int>(channel)] = from[x];
                } else {
                    float value = scale;
                    if constexpr (floatSamples) {
                        value *= std::isnan(from[x]) ? 0.0F : std::clamp(from[x], 0.0F, 1.0F);
                    } else {
                        value *= static_cast<float>(from[x] >> shift & ((1 << depth) - 1));
                    }
                    if constexpr (dithered) {
                        value += dither.row(y)[x];
                    } else if constexpr (!floatChannels) {
                        value += 0.5F;
                    }
                    to[4 * x + static_cast<int>(channel)] = static_cast<Channel>(std::min(value, highest));
                }
            }
        }
    }
}

template <class Sample>
void rgbToPicture(const AVFrame& frame, const AVPixFmtDescriptor& format, Picture& picture, bool dithers) {
    switch (picture.format()) {
        case formatBgra16: return rgbToPicture<Sample, std::uint16_t>(frame, format, picture, dithers);
        case formatBgraFloat: return rgbToPicture<Sample, float>(frame, format, picture, dithers);
        default: return rgbToPicture<Sample, std::uint8_t>(frame, format, picture, dithers);
    }
}

/// The frame scaled, or in a format whose samples lie plainly.
FramePtr scaled(const AVFrame& frame, int width, int height, AVPixelFormat format) {
    FramePtr result = newFrame();
    result->width = width;
    result->height = height;
    result->format = format;
    check(av_frame_get_buffer(result.get(), 0), "cannot convert a frame");
    const auto from = static_cast<AVPixelFormat>(frame.format);
    const ScalerPtr scaler(sws_getContext(frame.width, frame.height, from, width, height, format,
                                          SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INP, nullptr,
                                          nullptr, nullptr));
    if (scaler == nullptr)
        throw Error(std::string("frames of the pixel format ") + av_get_pix_fmt_name(from) +
                    " cannot be converted");
    sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, result->data, result->linesize);
    return result;
}

/// Luma and chroma in 16 bits.
AVPixelFormat deepFormat(const AVPixFmtDescriptor& format) {
    return (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0 ? AV_PIX_FMT_YUVA444P16 : AV_PIX_FMT_YUV444P16;
}

/// What a format of unusual layout is brought into first.
AVPixelFormat plainFormat(const AVPixFmtDescriptor& format, AVPixelFormat code) {
    const bool deep = formatDepth(code) > 8;
    if (!formatIsRgb(code) && format.nb_components >= 3) {
        if (deep) return deepFormat(format);
        return (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0 ? AV_PIX_FMT_YUVA444P : AV_PIX_FMT_YUV444P;
    }
    return deep ? AV_PIX_FMT_RGBA64 : AV_PIX_FMT_BGRA;
}

}  // namespace

std::shared_ptr<Picture> frameToPicture(const AVFrame& frame, int width, int height,
                                        std::uint32_t pictureFormat, const ColorCoding& coding,
                                        bool interlaced, bool dithers) {
    const auto code = static_cast<AVPixelFormat>(frame.format);
    const AVPixFmtDescriptor& format = descriptionOf(code);
    const SampleKind kind = sampleKind(format);
    const bool sameSize = frame.width == width && frame.height == height;
    if (!sameSize || kind == SampleKind::Other) {
        const AVPixelFormat plain = kind == SampleKind::Other ? plainFormat(format, code) : code;
        return frameToPicture(*scaled(frame, width, height, plain), width, height, pictureFormat, coding,
                              interlaced, dithers);
    }

    const bool isRgb = formatIsRgb(code) || kind == SampleKind::Floats;  // float samples are never YUV
    // Luma and chroma fill deep pictures as words and floats not at all; a clip's format may change within
    // it.
    const bool isFloat = pictureFormat == formatBgraFloat;
    if (!isRgb && (isFloat || (kind == SampleKind::Bytes && pictureFormat != PixKit::formatBgra))) {
        const AVPixelFormat deep = isFloat ? AV_PIX_FMT_RGBA64 : deepFormat(format);
        return frameToPicture(*scaled(frame, width, height, deep), width, height, pictureFormat, coding,
                              interlaced, dithers);
    }
    auto picture = std::make_shared<Picture>(width, height, pictureFormat);
    const std::optional<PixelFormat> packed = packedRgb(code);
    if (packed && bytesOf(PixelLayout::Bgra, packed->depth) == PixKit::bytesPerPixel(pictureFormat)) {
        for (int y = 0; y < height; ++y) {
            rowToBgra(*packed, frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0], picture->row(y), width);
        }
    } else if (isRgb) {
        switch (kind) {
            case SampleKind::Bytes: rgbToPicture<std::uint8_t>(frame, format, *picture, dithers); break;
            case SampleKind::Words: rgbToPicture<std::uint16_t>(frame, format, *picture, dithers); break;
            default: rgbToPicture<float>(frame, format, *picture, dithers);
        }
    } else if (kind == SampleKind::Bytes) {
        yuvToPicture<std::uint8_t>(frame, format, *picture, coding, interlaced, dithers);
    } else {
        yuvToPicture<std::uint16_t>(frame, format, *picture, coding, interlaced, dithers);
    }
    return picture;
}

}  // namespace vireo
