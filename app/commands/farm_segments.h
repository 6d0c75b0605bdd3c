// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_FARM_SEGMENTS_H
#define VIREO_APP_COMMANDS_FARM_SEGMENTS_H

#include "app/commands/command_set.h"
#include "app/commands/given_options.h"
#include "app/render/render_media.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vireo {

struct FarmOptions {
    RenderOptions render;
    std::int64_t segments = 1;
    std::string part;    ///< "segments", "join" or both.
    std::string format;  ///< Of the plan: "sh", "json", "openjd" or "snakemake".
    bool json = false;   ///< Of the status.
    bool keep = false;
    std::vector<GivenOption> given;  ///< Everything but the files, also the options of every command.
};

/// Prints what renders one input in segments and joins them: shell lines, or what another program runs.
void planFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options);

/// Prints which segments of a plan that was given the same options are there.
void showFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options);

/// Joins the segments of a plan that was given the same options.
void joinFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options);

/// Renders what is missing of the segments, of about ten seconds each, and joins them. What is whole stays
/// where that is interrupted, for one with the same options to go on. Throws Error.
RenderSummary renderInSegments(const Catalogue& catalogue, const GlobalOptions& global, FarmOptions options,
                               Messages& messages);

}  // namespace vireo

#endif
