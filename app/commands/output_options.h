// SPDX-License-Identifier: MIT
// Several outputs of one render: --output and the options that follow it.
#ifndef VIREO_APP_COMMANDS_OUTPUT_OPTIONS_H
#define VIREO_APP_COMMANDS_OUTPUT_OPTIONS_H

#include "app/commands/options.h"

#include <CLI/CLI.hpp>

namespace vireo {

/// --output. To be added behind the options of outputs, which may be repeated from then on.
void addOutputs(CLI::App& command, RenderOptions& options);

/// The job with the outputs that a command was given: options of outputs belong to the --output before them,
/// or to OUT. `hasOut`: whether the job's own output is one of them. Throws Error of wrong usage.
RenderJob withOutputs(const RenderJob& job, const CLI::App& command, bool hasOut);

}  // namespace vireo

#endif
