// SPDX-License-Identifier: MIT
// Pixel format conversion on the way out: the filters' formats to any of FFmpeg's libraries.
#ifndef VIREO_APP_MEDIA_PICTURE_TO_FRAME_H
#define VIREO_APP_MEDIA_PICTURE_TO_FRAME_H

#include "app/media/color_coding.h"
#include "app/media/ffmpeg_objects.h"
#include "engine/chain/picture.h"

namespace vireo {

/// Converts pictures to frames of one format and size.
class FrameConverter {
public:
    FrameConverter(AVPixelFormat format, int width, int height, const ColorCoding& coding);

    /// A frame with its own memory (which is recycled) and no properties beyond geometry and format.
    FramePtr frameOf(const Picture& picture, bool interlaced) const;

private:
    FramePtr emptyFrame() const;

    AVPixelFormat format_;
    int width_;
    int height_;
    ColorCoding coding_;
    BufferPoolPtr pool_;
};

/// Whether FrameConverter makes frames of the format.
bool convertsTo(AVPixelFormat format);

}  // namespace vireo

#endif
