// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_RENDER_PIPELINE_H
#define VIREO_APP_RENDER_PIPELINE_H

#include "app/base/interruption.h"
#include "app/media/media.h"

#include <cstdint>
#include <functional>
#include <string>

namespace vireo {

enum class Damage {
    Lost,      ///< The frame is left out.
    Impaired,  ///< It was read in part and is rendered.
};

/// What happens on the calling thread while the pipeline runs.
struct PipelineEvents {
    std::function<void(std::int64_t frames)> written;
    std::function<void(Damage damage, std::int64_t frame, const std::string& reason)> damaged;
};

/// Moves every frame from reader through processor to writer: one thread reads, `jobs` threads convert and
/// render, the calling thread writes, in order. A few frames are under way at a time, however long the clip.
/// Whatever one of them throws stops all and comes out here. Returns the number of frames written.
std::int64_t runPipeline(Media& media, FrameProcessor& processor, int jobs, StopRequest& stop,
                         const PipelineEvents& events);

}  // namespace vireo

#endif
