// SPDX-License-Identifier: MIT
#include "app/media/frame_output.h"

#include <cstring>

namespace vireo {
namespace {

std::shared_ptr<Picture> premultiplied(const Picture& picture) {
    auto copy = std::make_shared<Picture>(picture.width(), picture.height(), picture.format());
    for (int y = 0; y < picture.height(); ++y)
        std::memcpy(copy->row(y), picture.row(y), static_cast<std::size_t>(picture.rowBytes()));
    premultiply(*copy);
    return copy;
}

}  // namespace

FrameOutput::FrameOutput(const EncoderChoice& choice, const AVCodecContext& encoder, bool premultiply,
                         Messages& messages)
    : alpha_(choice.alpha),
      alphaKeepers_(choice.container != nullptr ? "--alpha and a name that ends in .mov or .mkv keep it"
                                                : "a name that ends in .png, .tif or .webp keeps it"),
      premultiply_(premultiply),
      quality_(choice.frameQuality),
      pixelAspect_(encoder.sample_aspect_ratio),
      range_(encoder.color_range),
      matrix_(encoder.colorspace),
      converter_(choice.format, encoder.width, encoder.height, choice.coding),
      messages_(messages) {}

FramePtr FrameOutput::frameOf(const Picture& picture, const FfmpegFrame& source, bool isOpaque) {
    if (!alpha_ && !isOpaque && !alphaDropped_ && hasTransparency(picture) && !alphaDropped_.exchange(true)) {
        messages_.notice(
            MessageCode::AlphaDropped,
            std::string("some pixels are transparent and the output holds no alpha: ") + alphaKeepers_);
    }
    const bool interlaced = source.position.interlacing != Interlacing::Progressive;
    FramePtr frame = premultiply_ ? converter_.frameOf(*premultiplied(picture), interlaced)
                                  : converter_.frameOf(picture, interlaced);
    check(av_frame_copy_props(frame.get(), &source.properties()), "cannot pass on a frame");
    av_frame_remove_side_data(frame.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    av_dict_free(&frame->metadata);
    frame->interlaced_frame = interlaced ? 1 : 0;
    frame->top_field_first = source.position.interlacing == Interlacing::TopFieldFirst ? 1 : 0;
    frame->pict_type = AV_PICTURE_TYPE_NONE;
    frame->key_frame = 0;
    frame->repeat_pict = 0;
    if (quality_ != 0) frame->quality = quality_;
    frame->sample_aspect_ratio = pixelAspect_;
    frame->color_range = range_;
    frame->colorspace = matrix_;
    return frame;
}

}  // namespace vireo
