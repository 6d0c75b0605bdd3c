// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_FARM_SEGMENTS_H
#define VIREO_APP_COMMANDS_FARM_SEGMENTS_H

#include "app/commands/command_set.h"
#include "app/commands/options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// An option as it stood on the command line; flags have no value.
struct GivenOption {
    std::string name;
    std::optional<std::string> value;
};

struct FarmOptions {
    RenderOptions render;
    std::int64_t segments = 1;
    std::string part;  ///< "segments", "join" or both.
    bool keep = false;
    std::vector<GivenOption> given;  ///< Everything but the files, also the options of every command.
};

/// Prints shell lines that render one input in segments and join them.
void planFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options);

/// Joins the segments of a plan that was given the same options.
void joinFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options);

}  // namespace vireo

#endif
