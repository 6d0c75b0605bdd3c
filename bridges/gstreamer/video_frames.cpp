// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/video_frames.h"

namespace vireo::gstreamer {
namespace {

constexpr std::int32_t progressive = 0, topFieldFirst = 1, bottomFieldFirst = 2;

VireoLayout layoutOf(GstVideoFormat format) {
    switch (format) {
        case GST_VIDEO_FORMAT_RGBA: return VireoRgba;
        case GST_VIDEO_FORMAT_ARGB: return VireoArgb;
        case GST_VIDEO_FORMAT_ABGR: return VireoAbgr;
        case GST_VIDEO_FORMAT_BGRx: return VireoBgrx;
        case GST_VIDEO_FORMAT_RGBx: return VireoRgbx;
        case GST_VIDEO_FORMAT_xRGB: return VireoXrgb;
        case GST_VIDEO_FORMAT_xBGR: return VireoXbgr;
        case GST_VIDEO_FORMAT_BGR: return VireoBgr;
        case GST_VIDEO_FORMAT_RGB: return VireoRgb;
        case GST_VIDEO_FORMAT_GRAY8: return VireoGrey;
        default: return VireoBgra;
    }
}

bool isInterlaced(const GstVideoInfo& info, GstBuffer* buffer) {
    switch (GST_VIDEO_INFO_INTERLACE_MODE(&info)) {
        case GST_VIDEO_INTERLACE_MODE_INTERLEAVED: return true;
        case GST_VIDEO_INTERLACE_MODE_MIXED:
            return buffer == nullptr || GST_BUFFER_FLAG_IS_SET(buffer, GST_VIDEO_BUFFER_FLAG_INTERLACED);
        default: return false;
    }
}

}  // namespace

VireoFrame frameOf(const GstVideoInfo& info) {
    VireoFrame frame{};
    frame.structSize = sizeof frame;
    frame.width = GST_VIDEO_INFO_WIDTH(&info);
    frame.height = GST_VIDEO_INFO_HEIGHT(&info);
    frame.layout = layoutOf(GST_VIDEO_INFO_FORMAT(&info));
    frame.depth = VireoDepth8;
    frame.premultiplied = GST_VIDEO_INFO_FLAG_IS_SET(&info, GST_VIDEO_FLAG_PREMULTIPLIED_ALPHA) ? 1 : 0;
    frame.stride = GST_VIDEO_INFO_PLANE_STRIDE(&info, 0);
    return frame;
}

VireoFrame frameOf(GstVideoFrame& mapped) {
    VireoFrame frame = frameOf(mapped.info);
    frame.pixels = GST_VIDEO_FRAME_PLANE_DATA(&mapped, 0);
    return frame;
}

std::int32_t interlacingOf(const GstVideoInfo& info, GstBuffer* buffer) {
    if (!isInterlaced(info, buffer)) return progressive;
    switch (GST_VIDEO_INFO_FIELD_ORDER(&info)) {
        case GST_VIDEO_FIELD_ORDER_TOP_FIELD_FIRST: return topFieldFirst;
        case GST_VIDEO_FIELD_ORDER_BOTTOM_FIELD_FIRST: return bottomFieldFirst;
        default: break;
    }
    const bool saysTopFirst = buffer == nullptr || GST_BUFFER_FLAG_IS_SET(buffer, GST_VIDEO_BUFFER_FLAG_TFF);
    return saysTopFirst ? topFieldFirst : bottomFieldFirst;
}

}  // namespace vireo::gstreamer
