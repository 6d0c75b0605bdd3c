// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_RENDER_RENDER_MEDIA_H
#define VIREO_APP_RENDER_RENDER_MEDIA_H

#include "app/media/media.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace vireo {

/// How many frames a wish of --jobs renders side by side; 0 for the machine's cores.
int framesAtOnce(int jobs);

/// First and last frames of stretches, in order.
using FrameRuns = std::vector<std::pair<std::int64_t, std::int64_t>>;

/// What came out of a job that did not fail.
struct RenderSummary {
    std::int64_t frames = 0;
    double seconds = 0;  ///< Wall time.
    std::int64_t bytes = 0;
    FrameRuns lost;      ///< Damaged and left out.
    FrameRuns impaired;  ///< Damaged and rendered.
    MediaDescription media;
};

/// Renders one input to its outputs; in a dry run, opens both. Notices and warnings go to standard error, one
/// sentence a line. Throws Error; nothing half-written is left under the output's name.
RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor, Messages& messages);
RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor);

}  // namespace vireo

#endif
