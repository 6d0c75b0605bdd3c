// SPDX-License-Identifier: MIT
// Pixel format conversion on the way in: any format of FFmpeg's libraries to the filters'.
#ifndef VIREO_APP_MEDIA_FRAME_TO_PICTURE_H
#define VIREO_APP_MEDIA_FRAME_TO_PICTURE_H

#include "app/media/color_coding.h"
#include "app/media/ffmpeg_objects.h"
#include "engine/chain/picture.h"

#include <memory>

namespace vireo {

/// The pixels of a frame, stored as it is, with alpha as it is. A frame deeper than the picture
/// is dithered in an ordered pattern, or rounded without `dithers`. `interlaced`: chroma halved down belongs
/// to the fields. A frame of another size than `width` x `height` is scaled. Throws Error where the libraries
/// cannot convert the format.
std::shared_ptr<Picture> frameToPicture(const AVFrame& frame, int width, int height,
                                        std::uint32_t pictureFormat, const ColorCoding& coding,
                                        bool interlaced, bool dithers);

}  // namespace vireo

#endif
