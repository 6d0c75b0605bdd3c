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

}  // namespace vireo
