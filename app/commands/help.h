// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_HELP_H
#define VIREO_APP_COMMANDS_HELP_H

#include <CLI/CLI.hpp>

#include <memory>
#include <string>
#include <vector>

namespace vireo {

/// The title of the options that every command takes.
inline constexpr char commonGroup[] = "Options of every command";

/// Options of one kind, in the order of their description.
struct OptionGroup {
    std::string title;
    std::vector<const CLI::Option*> options;
};

/// What a command's help shows: the groups of its options, the general one last. Positional arguments and
/// what has no description are left out.
std::vector<OptionGroup> optionGroups(const CLI::App& command);

/// The positional arguments of a command in their order.
std::vector<const CLI::Option*> positionals(const CLI::App& command);

/// "vireo render IN... [OUT] [OPTIONS]".
std::string usageLine(const CLI::App& command);

/// "-f, --filter FILTER:..."
std::string optionTerm(const CLI::Option& option);

/// The commands right under another one, or under the program, that help shows.
std::vector<const CLI::App*> shownCommands(const CLI::App& program);

/// Those of all levels that have none under them.
std::vector<const CLI::App*> allCommands(const CLI::App& program);

/// Makes the text of --help: what it does, how it is called, its options, its examples. Not wider than 100
/// columns.
std::shared_ptr<CLI::FormatterBase> helpFormatter();

}  // namespace vireo

#endif
