// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_GIVEN_OPTIONS_H
#define VIREO_APP_COMMANDS_GIVEN_OPTIONS_H

#include "app/commands/options.h"

#include <CLI/CLI.hpp>

#include <optional>
#include <string>
#include <vector>

namespace vireo {

/// An option as it stood on the command line; flags have no value.
struct GivenOption {
    std::string name;
    std::optional<std::string> value;
};

/// The options that a command was given, in their order. `settings` are those among them that were taken out
/// while they were read.
std::vector<GivenOption> givenOptions(const CLI::App& command, const std::vector<SettingsOption>& settings);

}  // namespace vireo

#endif
