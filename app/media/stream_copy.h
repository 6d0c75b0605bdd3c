// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_STREAM_COPY_H
#define VIREO_APP_MEDIA_STREAM_COPY_H

#include "app/media/ffmpeg_objects.h"

namespace vireo {

/// One stream beside the video on its way from an input to an output.
class StreamCopy {
public:
    virtual ~StreamCopy() = default;
    /// Times are the input's.
    virtual void take(PacketPtr packet) = 0;
    virtual void finish() {}
};

}  // namespace vireo

#endif
