// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_KEY_FRAME_SEEK_H
#define VIREO_APP_MEDIA_KEY_FRAME_SEEK_H

#include "app/media/ffmpeg_objects.h"

#include <cstdint>

namespace vireo {

/// Seeks to a stream's key frame that is shown at `time` or before, else to the stream's `start`. Times are
/// the stream's.
void seekToKeyFrame(AVFormatContext& input, int stream, std::int64_t time, std::int64_t start);

}  // namespace vireo

#endif
