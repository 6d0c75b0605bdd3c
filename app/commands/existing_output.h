// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_EXISTING_OUTPUT_H
#define VIREO_APP_COMMANDS_EXISTING_OUTPUT_H

#include "app/media/frame_processor.h"
#include "app/media/render_job.h"

namespace vireo {

/// Whether all that a job would write is there; a result has its name only when it is whole. The input of a
/// sequence is opened for that. Throws Error.
bool isWholeOutput(const RenderJob& job, FrameProcessor& chain);

}  // namespace vireo

#endif
