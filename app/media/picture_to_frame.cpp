// SPDX-License-Identifier: MIT
#include "app/media/picture_to_frame.h"

#include "app/media/pixel_format.h"
#include "app/media/sample_layout.h"
#include "engine/error.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <algorithm>
#include <cmath>
#include <type_traits>

namespace vireo {
namespace {

constexpr int rowAlignment = 64;

/// Planar YUV in this machine's byte order, chroma halved at most: what the kernels write.
bool plainYuv(const AVPixFmtDescriptor& format) {
    const SampleKind kind = sampleKind(format);
    if (kind != SampleKind::Bytes && kind != SampleKind::Words) return false;
    if ((format.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_BE)) != 0 || format.log2_chroma_w > 1 ||
        format.log2_chroma_h > 1)
        return false;
    for (int i = 0; i < format.nb_components; ++i) {
        if (format.comp[i].step != (kind == SampleKind::Bytes ? 1 : 2) || format.comp[i].shift != 0)
            return false;
    }
    return true;
}

bool plainRgb(const AVPixFmtDescriptor& format) {
    return (format.flags & AV_PIX_FMT_FLAG_RGB) != 0 && format.comp[0].shift == 0 &&
           sampleKind(format) != SampleKind::Other;
}

/// A plain format from which the libraries make the wanted one without loss, or nearly so.
AVPixelFormat stepFormat(const AVPixFmtDescriptor& wanted) {
    const bool alpha = (wanted.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const int depth = wanted.comp[0].depth;
    if ((wanted.flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0 || wanted.nb_components < 3)
        return depth > 8 ? AV_PIX_FMT_RGBA64 : AV_PIX_FMT_BGRA;
    std::string name = alpha ? "yuva" : "yuv";
    const int w = wanted.log2_chroma_w;
    const int h = wanted.log2_chroma_h;
    name += w == 1 && h == 1 ? "420p" : w == 1 && h == 0 ? "422p" : w == 0 && h == 1 ? "440p" : "444p";
    if (depth > 8) name += std::to_string(depth) + "le";
    const AVPixelFormat step = av_get_pix_fmt(name.c_str());
    if (step != AV_PIX_FMT_NONE) return step;
    return alpha ? AV_PIX_FMT_YUVA444P16 : AV_PIX_FMT_YUV444P16;
}

/// The two rows whose mean a row of chroma is.
std::pair<int, int> lumaRows(int chromaRow, int height, int shift, bool interlaced) {
    if (shift == 0) return {chromaRow, chromaRow};
    if (!interlaced) return {2 * chromaRow, std::min(2 * chromaRow + 1, height - 1)};
    const int above = 4 * (chromaRow / 2) + chromaRow % 2;
    // A field that lacks its last row repeats the one before.
    const auto existing = [&](int y) { return y < height ? y : std::max(y - 2, 0); };
    return {existing(above), existing(existing(above + 2))};
}

template <class Channel, class Sample>
void pictureToYuv(const PackKernels<Channel, Sample>& by, const Picture& picture,
                  const AVPixFmtDescriptor& format, const ColorCoding& coding, bool interlaced,
                  AVFrame& frame) {
    const RgbToYuv matrix = rgbToYuv(coding, 8 * sizeof(Channel), format.comp[0].depth);
    const auto from = [&](int y) { return reinterpret_cast<const Channel*>(picture.row(y)); };
    const auto to = [&](int plane, int y) {
        return reinterpret_cast<Sample*>(frame.data[plane] + std::ptrdiff_t{y} * frame.linesize[plane]);
    };
    const bool hasAlpha = (format.flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const bool hasChroma = format.nb_components >= 3;
    const int alphaPlane = format.comp[format.nb_components - 1].plane;
    const auto chroma = format.log2_chroma_w == 1 ? by.halfChroma : by.chroma;
    const int shift = hasChroma ? format.log2_chroma_h : 0;
    // Rows of chroma are made while their rows of colours lie in the cache, and the picture is read as it
    // lies in memory, from its last row.
    for (int y = AV_CEIL_RSHIFT(frame.height, shift) - 1; y >= 0; --y) {
        for (int row = std::min(frame.height, (y + 1) << shift) - 1; row >= y << shift; --row) {
            by.luma(from(row), to(0, row), frame.width, matrix);
            if (hasAlpha) by.alpha(from(row), to(alphaPlane, row), frame.width, matrix);
        }
        if (!hasChroma) continue;
        const auto [above, below] = lumaRows(y, frame.height, shift, interlaced);
        chroma(from(above), from(below), to(format.comp[1].plane, y), to(format.comp[2].plane, y),
               frame.width, matrix);
    }
}

template <class Channel, class Sample>
void pictureToRgb(const Picture& picture, const AVPixFmtDescriptor& format, AVFrame& frame) {
    constexpr bool floatSamples = std::is_floating_point_v<Sample>;
    constexpr float white = std::is_floating_point_v<Channel> ? 1.0F
                            : sizeof(Channel) == 1            ? 255.0F
                                                              : 65535.0F;
    const float highest = floatSamples ? 1.0F : std::ldexp(1.0F, format.comp[0].depth) - 1;
    const float scale = highest / white;
    const bool swap = (format.flags & AV_PIX_FMT_FLAG_BE) != 0 && sizeof(Sample) == 2;
    constexpr int channels[] = {2, 1, 0, 3};  // of red, green, blue, alpha
    for (int i = 0; i < format.nb_components; ++i) {
        const AVComponentDescriptor& component = format.comp[i];
        for (int y = 0; y < frame.height; ++y) {
            const Channel* const from = reinterpret_cast<const Channel*>(picture.row(y)) + channels[i];
            std::uint8_t* const to = frame.data[component.plane] + component.offset +
                                     std::ptrdiff_t{y} * frame.linesize[component.plane];
            for (int x = 0; x < frame.width; ++x) {
                Sample sample;
                if constexpr (std::is_same_v<Channel, Sample> && sizeof(Sample) == 1) {
                    sample = from[4 * x];
                } else {
                    const float value = static_cast<float>(from[4 * x]) * scale;
                    sample =
                        static_cast<Sample>(floatSamples ? value : std::clamp(value + 0.5F, 0.0F, highest));
                }
                if constexpr (sizeof(Sample) == 2) {
                    if (swap) sample = static_cast<Sample>(sample << 8 | sample >> 8);
                }
                std::memcpy(to + std::ptrdiff_t{x} * component.step, &sample, sizeof sample);
            }
        }
    }
}

template <class Channel>
void pictureToRgb(const Picture& picture, const AVPixFmtDescriptor& format, AVFrame& frame) {
    switch (sampleKind(format)) {
        case SampleKind::Bytes: return pictureToRgb<Channel, std::uint8_t>(picture, format, frame);
        case SampleKind::Words: return pictureToRgb<Channel, std::uint16_t>(picture, format, frame);
        default: return pictureToRgb<Channel, float>(picture, format, frame);
    }
}

/// A float picture for the kernels, which take whole numbers.
std::shared_ptr<Picture> withWords(const Picture& picture) {
    auto words = std::make_shared<Picture>(picture.width(), picture.height(), formatBgra16);
    for (int y = 0; y < picture.height(); ++y) {
        const float* const from = reinterpret_cast<const float*>(picture.row(y));
        std::uint16_t* const to = reinterpret_cast<std::uint16_t*>(words->row(y));
        for (int i = 0; i < 4 * picture.width(); ++i)
            to[i] = static_cast<std::uint16_t>(std::clamp(from[i], 0.0F, 1.0F) * 65535 + 0.5F);
    }
    return words;
}

}  // namespace

bool convertsTo(AVPixelFormat format) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    return description != nullptr && (description->flags & AV_PIX_FMT_FLAG_HWACCEL) == 0 &&
           (plainYuv(*description) || plainRgb(*description) || sws_isSupportedOutput(format) > 0);
}

FrameConverter::FrameConverter(AVPixelFormat format, int width, int height, const ColorCoding& coding)
    : format_(format), width_(width), height_(height), coding_(coding) {
    const int bytes =
        check(av_image_get_buffer_size(format, width, height, rowAlignment), "cannot make frames");
    // Encoders may read a little past the last row.
    pool_.reset(av_buffer_pool_init(static_cast<std::size_t>(bytes) + 4 * rowAlignment, nullptr));
    if (pool_ == nullptr) throw std::bad_alloc();
}

FramePtr FrameConverter::emptyFrame() const {
    FramePtr frame = newFrame();
    frame->width = width_;
    frame->height = height_;
    frame->format = format_;
    frame->buf[0] = av_buffer_pool_get(pool_.get());
    if (frame->buf[0] == nullptr) throw std::bad_alloc();
    check(av_image_fill_arrays(frame->data, frame->linesize, frame->buf[0]->data, format_, width_, height_,
                               rowAlignment),
          "cannot make frames");
    frame->extended_data = frame->data;
    return frame;
}

FramePtr FrameConverter::frameOf(const Picture& picture, bool interlaced) const {
    const AVPixFmtDescriptor& format = *av_pix_fmt_desc_get(format_);
    FramePtr frame = emptyFrame();
    const std::optional<PixelFormat> packed = packedRgb(format_);
    if (packed && bytesOf(PixelLayout::Bgra, packed->depth) == PixKit::bytesPerPixel(picture.format())) {
        for (int y = 0; y < height_; ++y) {
            rowFromBgra(*packed, picture.row(y), frame->data[0] + std::ptrdiff_t{y} * frame->linesize[0],
                        width_);
        }
    } else if (plainRgb(format)) {
        switch (picture.format()) {
            case formatBgra16: pictureToRgb<std::uint16_t>(picture, format, *frame); break;
            case formatBgraFloat: pictureToRgb<float>(picture, format, *frame); break;
            default: pictureToRgb<std::uint8_t>(picture, format, *frame);
        }
    } else if (plainYuv(format)) {
        if (picture.format() == formatBgraFloat) return frameOf(*withWords(picture), interlaced);
        const bool deepPicture = picture.format() == formatBgra16;
        const bool words = sampleKind(format) == SampleKind::Words;
        if (deepPicture && words) {
            pictureToYuv(colorKernelsTables.chosen().pack16Deep, picture, format, coding_, interlaced,
                         *frame);
        } else if (deepPicture) {
            pictureToYuv(colorKernelsTables.chosen().pack16, picture, format, coding_, interlaced, *frame);
        } else if (words) {
            pictureToYuv(colorKernelsTables.chosen().pack8Deep, picture, format, coding_, interlaced, *frame);
        } else {
            pictureToYuv(colorKernelsTables.chosen().pack8, picture, format, coding_, interlaced, *frame);
        }
    } else {
        const FrameConverter first(stepFormat(format), width_, height_, coding_);
        const FramePtr step = first.frameOf(picture, interlaced);
        const auto from = static_cast<AVPixelFormat>(step->format);
        const ScalerPtr scaler(sws_getContext(width_, height_, from, width_, height_, format_,
                                              SWS_BICUBIC | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
        if (scaler == nullptr)
            throw Error(std::string("frames cannot be converted to the pixel format ") + format.name);
        // The samples mean the same on both sides.
        const int* const table = sws_getCoefficients(SWS_CS_DEFAULT);
        sws_setColorspaceDetails(scaler.get(), table, coding_.fullRange, table, coding_.fullRange, 0, 1 << 16,
                                 1 << 16);
        sws_scale(scaler.get(), step->data, step->linesize, 0, height_, frame->data, frame->linesize);
    }
    return frame;
}

}  // namespace vireo
