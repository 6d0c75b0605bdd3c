// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_SEGMENT_JOIN_H
#define VIREO_APP_MEDIA_SEGMENT_JOIN_H

#include "app/media/media.h"

#include <string>
#include <vector>

namespace vireo {

/// A part of a clip that was rendered by itself, without sound, into the output's container.
struct Segment {
    std::int64_t first = 0;  ///< Frames of the clip, both included.
    std::int64_t last = 0;
    std::string file;
};

/// What a job renders.
struct ClipPart {
    std::int64_t firstFrame = 0;
    std::int64_t frames = 0;
    std::int64_t firstNumber = 1;  ///< In the name of a sequence's picture of frame 0.
    double frameRate = 25;
};

/// Looks into the input and at what the output is to be. Throws Error, also where frames cannot be counted.
ClipPart partOf(const RenderJob& job, const FrameProcessor& processor);

/// Writes the job's output out of its segments and of the sound and all else that its input holds: the same
/// as one render gives. Frames have the times that the input gives them, whatever the segments say. The
/// result is the number of frames. Throws Error, also where a segment is missing or lacks frames that the
/// input has.
std::int64_t joinSegments(const RenderJob& job, const FrameProcessor& processor,
                          const std::vector<Segment>& segments, Messages& messages);

}  // namespace vireo

#endif
