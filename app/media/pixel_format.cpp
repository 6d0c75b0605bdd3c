// SPDX-License-Identifier: MIT
#include "app/media/pixel_format.h"

#include "engine/error.h"

#include <algorithm>

namespace vireo {

const AVPixFmtDescriptor& descriptionOf(AVPixelFormat format) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(format);
    if (description == nullptr) throw Error("the pixel format of the input is not known");
    return *description;
}

int formatDepth(AVPixelFormat format) {
    const AVPixFmtDescriptor& description = descriptionOf(format);
    int depth = 8;
    for (int i = 0; i < description.nb_components; ++i) depth = std::max(depth, description.comp[i].depth);
    return depth;
}

bool formatHasAlpha(AVPixelFormat format) {
    return format == AV_PIX_FMT_PAL8 || (descriptionOf(format).flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

bool formatIsRgb(AVPixelFormat format) {
    return (descriptionOf(format).flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

std::optional<PixelFormat> packedRgb(AVPixelFormat format) {
    constexpr auto eight = SampleDepth::Eight, sixteen = SampleDepth::Sixteen;
    switch (format) {
        case AV_PIX_FMT_BGRA: return PixelFormat{PixelLayout::Bgra, eight};
        case AV_PIX_FMT_RGBA: return PixelFormat{PixelLayout::Rgba, eight};
        case AV_PIX_FMT_ARGB: return PixelFormat{PixelLayout::Argb, eight};
        case AV_PIX_FMT_ABGR: return PixelFormat{PixelLayout::Abgr, eight};
        case AV_PIX_FMT_BGR0: return PixelFormat{PixelLayout::Bgrx, eight};
        case AV_PIX_FMT_RGB0: return PixelFormat{PixelLayout::Rgbx, eight};
        case AV_PIX_FMT_0RGB: return PixelFormat{PixelLayout::Xrgb, eight};
        case AV_PIX_FMT_0BGR: return PixelFormat{PixelLayout::Xbgr, eight};
        case AV_PIX_FMT_BGR24: return PixelFormat{PixelLayout::Bgr, eight};
        case AV_PIX_FMT_RGB24: return PixelFormat{PixelLayout::Rgb, eight};
        case AV_PIX_FMT_BGRA64: return PixelFormat{PixelLayout::Bgra, sixteen};
        case AV_PIX_FMT_RGBA64: return PixelFormat{PixelLayout::Rgba, sixteen};
        case AV_PIX_FMT_BGR48: return PixelFormat{PixelLayout::Bgr, sixteen};
        case AV_PIX_FMT_RGB48: return PixelFormat{PixelLayout::Rgb, sixteen};
        default: return std::nullopt;
    }
}

}  // namespace vireo
