// SPDX-License-Identifier: MIT
// What the options of a render say, for every command that takes them.
#ifndef VIREO_APP_COMMANDS_RENDER_JOBS_H
#define VIREO_APP_COMMANDS_RENDER_JOBS_H

#include "app/commands/options.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vireo {

/// What all jobs of a command share: everything but input and output. Throws RenderError of wrong usage.
RenderJob commonJob(const GlobalOptions& global, const RenderOptions& options);

/// The code of --filter-format, where it was given. Throws RenderError of wrong usage.
std::optional<std::uint32_t> parseFormat(const std::string& name);

}  // namespace vireo

#endif
