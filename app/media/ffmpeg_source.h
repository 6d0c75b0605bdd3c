// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_FFMPEG_SOURCE_H
#define VIREO_APP_MEDIA_FFMPEG_SOURCE_H

#include "app/media/ffmpeg_reader.h"

#include <memory>

namespace vireo {

/// The open input of a job, a container or a sequence of pictures, with what an output takes from it.
struct FfmpegSource {
    std::unique_ptr<MediaReader> reader;
    FfmpegReader* container = nullptr;  ///< The reader where it has other streams.
    VideoProperties video;
    std::int64_t firstNumber = 1;  ///< In the name of a sequence's picture of frame 0.
    std::uint32_t pictureFormat = PixKit::formatBgra;
    int depth = 8;  ///< Bits per channel of rendered pictures.
};

/// `stop` and `messages` must outlive the result. Throws Error.
FfmpegSource openSource(const RenderJob& job, const FrameProcessor& processor, const StopRequest& stop,
                        Messages& messages);

/// The same for an input that is only looked at.
FfmpegSource openSource(const RenderJob& job, const StopRequest& stop, Messages& messages);

}  // namespace vireo

#endif
