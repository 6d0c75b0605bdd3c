// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_RENDER_QUEUE_H
#define VIREO_APP_COMMANDS_RENDER_QUEUE_H

#include "app/commands/render_work.h"

#include <vector>

namespace vireo {

struct QueuedRender {
    const RenderWork* work;
    const RenderJob* job;
};

/// Renders in order. Single pictures that follow each other are rendered side by side, `jobs` at once on a
/// thread each; what is said of them stays in order. An interruption ends all, so that fewer outcomes come
/// out, the interrupted one last.
std::vector<RenderOutcome> renderQueue(const std::vector<QueuedRender>& renders, int jobs);

}  // namespace vireo

#endif
