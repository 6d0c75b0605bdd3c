// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FRAME_OUTPUT_H
#define VIREO_APP_MEDIA_FRAME_OUTPUT_H

#include "app/media/encoder_choice.h"
#include "app/media/picture_to_frame.h"

#include <atomic>

namespace vireo {

/// Rendered pictures in the form that an encoder takes. Any number of threads may call.
class FrameOutput {
public:
    /// `messages` must outlive it.
    FrameOutput(const EncoderChoice& choice, const AVCodecContext& encoder, bool premultiply,
                Messages& messages);

    /// The picture with the properties of the frame that it came from. `isOpaque` where that is known.
    FramePtr frameOf(const Picture& picture, const FfmpegFrame& source, bool isOpaque = false);

private:
    bool alpha_;
    const char* alphaKeepers_;  ///< What would keep it.
    bool premultiply_;
    int quality_;
    AVRational pixelAspect_;
    AVColorRange range_;
    AVColorSpace matrix_;
    FrameConverter converter_;
    Messages& messages_;
    std::atomic<bool> alphaDropped_ = false;
};

}  // namespace vireo

#endif
