// SPDX-License-Identifier: MIT
// Sound and subtitles that a container does not hold as they are.
#ifndef VIREO_APP_MEDIA_STREAM_TRANSCODING_H
#define VIREO_APP_MEDIA_STREAM_TRANSCODING_H

#include "app/media/muxer.h"
#include "app/media/stream_copy.h"

#include <memory>

namespace vireo {

/// A sound stream through decoder and encoder; null where there is no pair for it.
std::unique_ptr<StreamCopy> transcodeSound(const AVStream& from, Muxer& muxer, double timeOrigin);

/// Text subtitles in the kind that the container takes; null where there is none.
std::unique_ptr<StreamCopy> transcodeSubtitles(const AVStream& from, Muxer& muxer, double timeOrigin);

}  // namespace vireo

#endif
