// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_DESCRIBE_MEDIA_H
#define VIREO_APP_MEDIA_DESCRIBE_MEDIA_H

#include "app/media/encoder_choice.h"
#include "app/media/ffmpeg_source.h"

namespace vireo {

InputDescription describeInput(const RenderJob& job, const FfmpegSource& source);

/// `choice` is what the output is written with.
OutputDescription describeOutput(const RenderJob& job, const FfmpegSource& source,
                                 const EncoderChoice& choice);

}  // namespace vireo

#endif
