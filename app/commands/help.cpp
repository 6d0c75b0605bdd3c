// SPDX-License-Identifier: MIT
#include "app/commands/help.h"

#include "app/base/terminal.h"

#include <algorithm>
#include <sstream>

namespace vireo {
namespace {

constexpr char generalGroup[] = "Options";
constexpr std::size_t termColumn = 34;
constexpr std::size_t lastColumn = 100;

std::string heading(const std::string& text) { return Terminal::output().styled(Style::Heading, text); }

/// Lines of words that end before `width`.
std::vector<std::string> wrapped(const std::string& text, std::size_t width) {
    std::vector<std::string> lines(1);
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (!lines.back().empty() && lines.back().size() + 1 + word.size() > width) lines.emplace_back();
        if (!lines.back().empty()) lines.back() += ' ';
        lines.back() += word;
    }
    return lines;
}

/// A term and what it means, in two columns.
std::string entry(const std::string& term, const std::string& meaning) {
    std::string text = "  " + Terminal::output().styled(Style::Name, term);
    std::size_t column = 2 + term.size();
    for (const std::string& line : wrapped(meaning, lastColumn - termColumn)) {
        if (column + 2 > termColumn) {
            text += '\n';
            column = 0;
        }
        text += std::string(termColumn - column, ' ') + line;
        column = termColumn;
    }
    return text + '\n';
}

/// A footer with its own headings, which stand at the left and end in a colon.
std::string styledFooter(const std::string& footer) {
    std::string text;
    std::istringstream lines(footer);
    for (std::string line; std::getline(lines, line);) {
        const bool isHeading = !line.empty() && line.front() != ' ' && line.back() == ':';
        text += (isHeading ? heading(line) : line) + '\n';
    }
    return text;
}

std::string groupText(const OptionGroup& group) {
    std::string text = '\n' + heading(group.title + ':') + '\n';
    for (const CLI::Option* option : group.options)
        text += entry(optionTerm(*option), option->get_description());
    return text;
}

/// What the program's options say of each of its commands.
std::string commonText(const CLI::App& command) {
    const CLI::App* program = &command;
    while (program->get_parent() != nullptr) program = program->get_parent();
    std::string text;
    for (const OptionGroup& group : optionGroups(*program)) {
        if (group.title == commonGroup) text += groupText(group);
    }
    return text;
}

class HelpFormatter : public CLI::FormatterBase {
public:
    std::string make_help(const CLI::App* command, std::string, CLI::AppFormatMode) const override {
        std::string text =
            command->get_description() + "\n\n" + heading("Usage:") + ' ' + usageLine(*command) + '\n';
        std::string arguments;
        for (const CLI::Option* argument :
             command->get_options([](const CLI::Option* option) { return option->get_positional(); })) {
            arguments += entry(argument->get_type_name(), argument->get_description());
        }
        if (!arguments.empty()) text += '\n' + arguments;
        const auto commands = shownCommands(*command);
        if (!commands.empty()) text += '\n' + heading("Commands:") + '\n';
        for (const CLI::App* shown : commands) text += entry(shown->get_name(), shown->get_description());
        for (const OptionGroup& group : optionGroups(*command)) text += groupText(group);
        if (command->get_parent() != nullptr) text += commonText(*command);
        if (!command->get_footer().empty()) text += '\n' + styledFooter(command->get_footer());
        return text;
    }
};

}  // namespace

std::vector<OptionGroup> optionGroups(const CLI::App& command) {
    std::vector<OptionGroup> groups;
    for (const std::string& title : command.get_groups()) {
        auto options = command.get_options([&title](const CLI::Option* option) {
            return option->get_group() == title && option->nonpositional() &&
                   !option->get_description().empty();
        });
        if (!options.empty()) groups.push_back({title, std::move(options)});
    }
    std::stable_partition(groups.begin(), groups.end(),
                          [](const OptionGroup& group) { return group.title != generalGroup; });
    return groups;
}

std::vector<const CLI::Option*> positionals(const CLI::App& command) {
    return command.get_options([](const CLI::Option* option) { return option->get_positional(); });
}

std::string usageLine(const CLI::App& command) {
    std::string line = command.get_name();
    for (const CLI::App* parent = command.get_parent(); parent != nullptr; parent = parent->get_parent())
        line.insert(0, parent->get_name() + ' ');
    if (!shownCommands(command).empty()) line += " COMMAND";
    for (const CLI::Option* argument : positionals(command)) {
        const std::string& name = argument->get_type_name();
        line += ' ' + (argument->get_required() || name.back() == ']' ? name : '[' + name + ']');
    }
    return line + " [OPTIONS]";
}

std::string optionTerm(const CLI::Option& option) {
    std::string term;
    for (const std::string& name : option.get_snames()) term += (term.empty() ? "-" : ", -") + name;
    for (const std::string& name : option.get_lnames()) term += (term.empty() ? "--" : ", --") + name;
    return option.get_type_name().empty() ? term : term + ' ' + option.get_type_name();
}

std::vector<const CLI::App*> shownCommands(const CLI::App& program) {
    auto commands =
        program.get_subcommands([](const CLI::App* command) { return !command->get_description().empty(); });
    return {commands.begin(), commands.end()};
}

std::vector<const CLI::App*> allCommands(const CLI::App& program) {
    std::vector<const CLI::App*> commands;
    for (const CLI::App* command : shownCommands(program)) {
        const auto below = allCommands(*command);
        commands.insert(commands.end(), below.begin(), below.end());
        if (below.empty()) commands.push_back(command);
    }
    return commands;
}

std::shared_ptr<CLI::FormatterBase> helpFormatter() { return std::make_shared<HelpFormatter>(); }

}  // namespace vireo
