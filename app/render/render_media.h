// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_RENDER_RENDER_MEDIA_H
#define VIREO_APP_RENDER_RENDER_MEDIA_H

#include "app/media/frame_processor.h"
#include "app/media/render_job.h"

#include <cstdint>

namespace vireo {

/// How many frames a wish of --jobs renders side by side; 0 for the machine's cores.
int framesAtOnce(int jobs);

/// What came out of a job that did not fail.
struct RenderSummary {
    std::int64_t frames = 0;
    double seconds = 0;  ///< Wall time.
};

/// Renders one input to one output. Notices and warnings go to standard error, one sentence a line. Throws
/// Error; nothing half-written is left under the output's name.
RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor);

}  // namespace vireo

#endif
