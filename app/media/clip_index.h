// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_CLIP_INDEX_H
#define VIREO_APP_MEDIA_CLIP_INDEX_H

#include "app/media/ffmpeg_input.h"
#include "app/media/render_job.h"

#include <cstdint>
#include <vector>

namespace vireo {

/// How many frames a clip has and when each is shown, as far as that is known before they are decoded.
struct ClipIndex {
    std::int64_t frameCount = 0;  ///< 0 where unknown.

    /// What the container itself says where all of its packets will be read; else 0.
    std::int64_t announcedFrames = 0;

    /// Of the frames in order, in the video's time base, where they were looked up: for a part of a clip that
    /// can be sought, and where nothing else tells the length. Else empty.
    std::vector<std::int64_t> times;
    std::int64_t lastDuration = 0;  ///< Of the last of them, 0 where unknown.
    AVRational timeBase;
    bool isSeekable = false;  ///< By `times`.

    /// Frames before a time in seconds from the first one, where all times are known.
    std::int64_t framesBefore(double time) const;
};

/// Looks up what the job needs to know.
ClipIndex indexClip(const FfmpegInput& input, const RenderJob& job, const StopRequest& stop);

}  // namespace vireo

#endif
