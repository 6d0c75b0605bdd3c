// SPDX-License-Identifier: MIT
// Frames of FFmpeg's libraries to pictures and back.
#ifndef VIREO_APP_MEDIA_PIXEL_CONVERSION_H
#define VIREO_APP_MEDIA_PIXEL_CONVERSION_H

#include "app/media/colour_coding.h"
#include "app/media/ffmpeg_objects.h"
#include "engine/chain/picture.h"

#include <memory>

namespace vireo {

/// Bits per channel of a format; 32 for float, at least 8.
int formatDepth(AVPixelFormat format);

bool formatHasAlpha(AVPixelFormat format);

/// Whether samples of the format are colours (or a palette's numbers) and not luma and chroma.
bool formatIsRgb(AVPixelFormat format);

/// The pixels of a frame, stored as it is, with alpha as it is. A frame deeper than the picture is dithered.
/// `interlaced`: chroma halved down belongs to the fields. A frame of another size than `width` x `height` is
/// scaled. Throws Error where the libraries cannot convert the format.
std::shared_ptr<Picture> pictureOf(const AVFrame& frame, int width, int height, std::uint32_t pictureFormat,
                                   const ColourCoding& coding, bool interlaced);

/// The same backwards, into frames of one format and size.
class FramePacker {
public:
    FramePacker(AVPixelFormat format, int width, int height, const ColourCoding& coding);

    /// A frame with its own memory (which is recycled) and no properties beyond geometry and format.
    FramePtr frameOf(const Picture& picture, bool interlaced) const;

private:
    FramePtr emptyFrame() const;

    AVPixelFormat format_;
    int width_;
    int height_;
    ColourCoding coding_;
    BufferPoolPtr pool_;
};

/// Whether FramePacker makes frames of the format.
bool canPack(AVPixelFormat format);

}  // namespace vireo

#endif
