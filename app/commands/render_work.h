// SPDX-License-Identifier: MIT
// What a command line of render, or an entry of a batch, asks for, and doing it.
#ifndef VIREO_APP_COMMANDS_RENDER_WORK_H
#define VIREO_APP_COMMANDS_RENDER_WORK_H

#include "app/commands/chain_options.h"
#include "app/commands/command_set.h"
#include "app/commands/given_options.h"
#include "app/commands/render_report.h"

#include <memory>
#include <string>
#include <vector>

namespace vireo {

struct RenderWorkOptions : RenderOptions {
    const CLI::App* command = nullptr;     ///< That reads them.
    std::unique_ptr<CLI::App> ownCommand;  ///< The same, where nobody else keeps it.
    bool recursive = false;
    std::string name;
    bool skipExisting = false;
    bool resume = false;
    std::vector<GivenOption> given;  ///< Where `resume` is set: all but the files.
};

/// What one render takes and what many take.
void addRenderWorkOptions(CLI::App& command, RenderWorkOptions& options);

/// One that was understood; the options must outlive it.
struct RenderWork {
    Session& session;
    const RenderWorkOptions& options;
    ChainOptions chain;
    std::vector<RenderJob> jobs;  ///< None where only settings are saved.
    std::vector<std::string> passedOver;
    bool isOneOfMany = false;  ///< A bad input does not stop the others.
};

/// Throws Error where that makes no sense.
RenderWork understood(Session& session, const RenderWorkOptions& options);

/// Throws Error where standard output would get pictures and something else.
void refuseMixedOutput(const RenderWork& work, bool json);

/// Does all of them, one after another and pictures side by side, `jobs` of them or as many frames; 0: as
/// many as the machine has cores. Each failure is told when it happens and, of many, all of them at the end.
/// Throws Error where nothing was begun. The reports stand in the order of the works.
std::vector<RenderReport> doAll(const std::vector<RenderWork>& works, int jobs);

}  // namespace vireo

#endif
