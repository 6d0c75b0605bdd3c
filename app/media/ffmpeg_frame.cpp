// SPDX-License-Identifier: MIT
#include "app/media/ffmpeg_frame.h"

#include "app/media/frame_to_picture.h"
#include "app/media/picture_tools.h"

#include <cstring>
#include <type_traits>

namespace vireo {
namespace {

template <class Tag>
Tag tagBelow(Tag end, const Tag& tag, Tag unspecified) {
    // As a number, since C++ has no such enumerator to read.
    std::underlying_type_t<Tag> number;
    std::memcpy(&number, &tag, sizeof number);
    return number < static_cast<std::underlying_type_t<Tag>>(end) ? tag : unspecified;
}

}  // namespace

AVColorRange knownTag(const AVColorRange& tag) {
    return tagBelow(AVCOL_RANGE_NB, tag, AVCOL_RANGE_UNSPECIFIED);
}

AVColorSpace knownTag(const AVColorSpace& tag) { return tagBelow(AVCOL_SPC_NB, tag, AVCOL_SPC_UNSPECIFIED); }

AVColorPrimaries knownTag(const AVColorPrimaries& tag) {
    return tagBelow(AVCOL_PRI_NB, tag, AVCOL_PRI_UNSPECIFIED);
}

AVColorTransferCharacteristic knownTag(const AVColorTransferCharacteristic& tag) {
    return tagBelow(AVCOL_TRC_NB, tag, AVCOL_TRC_UNSPECIFIED);
}

VideoProperties propertiesOf(const AVFrame& frame, AVCodecID codec) {
    VideoProperties video;
    video.format = static_cast<AVPixelFormat>(frame.format);
    video.codec = codec;
    video.width = frame.width;
    video.height = frame.height;
    video.pixelAspect = frame.sample_aspect_ratio;
    video.range = knownTag(frame.color_range);
    video.matrix = knownTag(frame.colorspace);
    video.primaries = knownTag(frame.color_primaries);
    video.transfer = knownTag(frame.color_trc);
    video.chromaLocation = tagBelow(AVCHROMA_LOC_NB, frame.chroma_location, AVCHROMA_LOC_UNSPECIFIED);
    video.coding = colorCoding(video.matrix, video.range, video.format, video.height);
    // These two are one matrix at any size and whatever is tagged.
    if (codec == AV_CODEC_ID_MJPEG || codec == AV_CODEC_ID_WEBP) video.coding.matrix = AVCOL_SPC_SMPTE170M;
    if (codec == AV_CODEC_ID_MJPEG && video.range == AVCOL_RANGE_UNSPECIFIED) video.coding.fullRange = true;
    return video;
}

Interlacing markedInterlacing(const AVFrame& frame) {
    if (frame.interlaced_frame == 0) return Interlacing::Progressive;
    return frame.top_field_first != 0 ? Interlacing::TopFieldFirst : Interlacing::BottomFieldFirst;
}

Interlacing uprightInterlacing(Interlacing stored, const VideoProperties& video) {
    if (stored == Interlacing::Progressive || video.orientation.transpose) return Interlacing::Progressive;
    // Upside down, the rows of an even height change their fields.
    if (!video.orientation.mirrorY || video.height % 2 != 0) return stored;
    return stored == Interlacing::TopFieldFirst ? Interlacing::BottomFieldFirst : Interlacing::TopFieldFirst;
}

PicturePtr DecodedFrame::picture(std::uint32_t format) {
    const bool interlaced = frame_->interlaced_frame != 0;
    std::shared_ptr<Picture> picture = frameToPicture(*frame_, video_.width, video_.height, format,
                                                      video_.coding, interlaced, video_.dithers);
    // Only the properties are needed from here on.
    FramePtr properties = newFrame();
    check(av_frame_copy_props(properties.get(), frame_.get()), "cannot read a frame");
    frame_ = std::move(properties);
    if (!video_.orientation.upright()) picture = oriented(*picture, video_.orientation);
    if (video_.premultiplied) unpremultiply(*picture);
    return picture;
}

}  // namespace vireo
