// SPDX-License-Identifier: MIT
// The options that render, compare and preview share.
#ifndef VIREO_APP_COMMANDS_RENDER_OPTIONS_H
#define VIREO_APP_COMMANDS_RENDER_OPTIONS_H

#include "app/base/ratio.h"
#include "app/commands/chain_options.h"
#include "app/commands/command_set.h"
#include "app/commands/options.h"
#include "app/render/chain_processor.h"
#include "app/render/comparison.h"
#include "app/render/render_media.h"

#include <memory>
#include <optional>
#include <string_view>

namespace vireo {

/// -f and whatever else makes up the chain.
void addChainOptions(CLI::App& command, RenderOptions& options);

/// Which frames of the input, and how they are to be understood.
void addInputOptions(CLI::App& command, RenderOptions& options);

/// What an input may read and ask for.
void addPolicyOptions(CLI::App& command, InputPolicy& policy);

/// How the output is written.
void addOutputOptions(CLI::App& command, RenderOptions& options);

/// All of these, the files and --to.
void addJobOptions(CLI::App& command, RenderOptions& options);

/// What jobs take, how progress is told and --jobs.
void addRenderOptions(CLI::App& command, RenderOptions& options);

/// How progress is told.
void addProgressOptions(CLI::App& command, RenderOptions& options);

/// --jobs.
void addWorkOptions(CLI::App& command, RenderOptions& options);

/// What all jobs of a command share. Throws Error of wrong usage.
RenderJob commonJob(const GlobalOptions& global, const RenderOptions& options);

/// NAME=VALUE. Throws Error of wrong usage.
std::pair<std::string, std::string> parseEncoderOption(const std::string& text);

/// Frames a second, at most 1000: a fraction, or a number with up to six digits behind the point. Throws
/// Error of wrong usage, which names the option.
Ratio parseFrameRate(const std::string& option, const std::string& text);

/// The chain that was read, ready to render `frames` side by side, as many as --jobs says where none are
/// told. Throws Error of wrong usage.
std::unique_ptr<ChainProcessor> chainOf(const ChainOptions& chain, const RenderOptions& options,
                                        int frames = 0);

/// The layout that a word of --layout means; nothing for "auto".
std::optional<Layout> layoutNamed(std::string_view name);

/// Tells how long a render took.
void tellDone(const RenderJob& job, const RenderSummary& summary, Messages& messages);

/// Renders and tells how long it took.
RenderSummary runJob(const RenderJob& job, FrameProcessor& processor, Messages& messages);
void runJob(const RenderJob& job, FrameProcessor& processor);

}  // namespace vireo

#endif
