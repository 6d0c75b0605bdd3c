// SPDX-License-Identifier: MIT
// vireo man: the manual page, of what the parser and the module say about themselves.
#include "app/base/files.h"
#include "app/commands/commands.h"
#include "app/commands/help.h"
#include "engine/settings/filter_settings.h"
#include "engine/settings/parameter_value.h"
#include "engine/settings/presets.h"
#include "engine/settings/settings_file.h"
#include "engine/text.h"

#include <algorithm>
#include <cctype>
#include <iostream>
#include <sstream>

namespace vireo {
namespace {

constexpr char programDescription[] =
    "vireo renders pictures, sequences of pictures and video through one filter or a chain of them. Sound, "
    "subtitles, chapters, time stamps and colours stay as they are; interlaced video is rendered field by "
    "field.";

constexpr char surroundings[] = R"man(.SH FILES
.TP
.I ~/.config/vireo/presets/*.json
The user's own presets; $XDG_CONFIG_HOME stands for ~/.config where it is set.
.SH ENVIRONMENT
.TP
.B NO_COLOR
Set to anything, it keeps colours off terminals.
.TP
.B VIREO_MODULE
The module to load instead of the one found, as with \-\-module.
.TP
.B VIREO_ISA
The instruction set to use, where it is less than the processor has: baseline, avx2 or avx512.
.SH SEE ALSO
.BR ffmpeg (1),
.BR ffplay (1)
)man";

/// Text as the formatter shows it, wherever it stands on a line.
std::string escaped(const std::string& text) {
    std::string result;
    if (!text.empty() && (text.front() == '.' || text.front() == '\'')) result = "\\&";
    for (const char character : text) {
        switch (character) {
            case '\\': result += "\\e"; break;
            case '-': result += "\\-"; break;
            case '\'': result += "\\(aq"; break;
            case '^': result += "\\(ha"; break;
            case '~': result += "\\(ti"; break;
            default: result += character;
        }
    }
    return result;
}

std::string bold(const std::string& text) { return "\\fB" + escaped(text) + "\\fR"; }

std::string manEntry(const std::string& term, const std::string& meaning) {
    return ".TP\n" + bold(term) + '\n' + escaped(meaning) + '\n';
}

/// Headings stand at the left and end in a colon; indented lines are examples, all others paragraphs.
std::string footerText(const std::string& footer, const std::string& headingMacro) {
    std::string text;
    std::istringstream lines(footer);
    bool inExample = false;
    for (std::string line; std::getline(lines, line);) {
        const bool isExample = line.starts_with("  ");
        if (isExample != inExample) text += isExample ? ".PP\n.EX\n" : ".EE\n";
        inExample = isExample;
        if (isExample) {
            text += escaped(line.substr(2)) + '\n';
        } else if (!line.empty() && line.back() == ':') {
            std::string heading = line.substr(0, line.size() - 1);
            if (headingMacro == ".SH")
                std::transform(heading.begin(), heading.end(), heading.begin(),
                               [](unsigned char c) { return std::toupper(c); });
            text += headingMacro + " \"" + escaped(heading) + "\"\n";
        } else if (!line.empty()) {
            text += (text.ends_with(".EE\n") ? ".PP\n" : "") + escaped(line) + '\n';
        }
    }
    return inExample ? text + ".EE\n" : text;
}

std::string optionsText(const CLI::App& command) {
    std::string text;
    for (const OptionGroup& group : optionGroups(command)) {
        std::string entries;
        for (const CLI::Option* option : group.options) {
            // Every command has it.
            const bool isHelp = option == command.get_help_ptr() && command.get_parent() != nullptr;
            if (!isHelp) entries += manEntry(optionTerm(*option), option->get_description());
        }
        if (!entries.empty()) text += ".PP\n" + bold(group.title) + '\n' + entries;
    }
    return text;
}

std::string commandText(const CLI::App& command) {
    std::string text =
        ".SS \"" + escaped(usageLine(command)) + "\"\n" + escaped(command.get_description()) + ".\n";
    for (const CLI::Option* argument : positionals(command))
        text += manEntry(argument->get_type_name(), argument->get_description());
    return text + optionsText(command) + ".PP\n" + footerText(command.get_footer(), ".PP\n.B");
}

std::string parameterText(const hosting::Parameter& parameter, std::int64_t initial) {
    const std::string text = valueText(parameter, initial);
    if (parameter.kind != hosting::ParameterKind::Number) return parameter.name + " (" + text + ')';
    const hosting::ValueRange range = hosting::valueRange(parameter);
    return parameter.name + " (" + std::to_string(range.minimum) + " to " + std::to_string(range.maximum) +
           ", " + text + ')';
}

std::string filtersText(const Catalogue& catalogue) {
    std::string text = ".SH FILTERS\nEach with its parameters, their ranges and their defaults.\n";
    for (const hosting::Filter& filter : catalogue.filters()) {
        std::vector<std::string> parameters;
        const std::vector<std::uint8_t> initial = FilterSettings(filter).record({});
        for (const hosting::Parameter& parameter : filter.properties.parameters)
            parameters.push_back(parameterText(parameter, hosting::readValue(parameter, initial)));
        text += manEntry(filter.properties.name,
                         parameters.empty() ? "No parameters." : enumeration(parameters) + '.');
    }
    return text;
}

std::string presetsText() {
    std::string text = ".SH PRESETS\n";
    for (const Preset& preset : shippedPresets())
        text += manEntry(preset.name, settingsDescription(preset.file, readFile(preset.file)));
    return text;
}

void printManual(const CLI::App& program, const Catalogue& catalogue) {
    std::cout << ".\\\" SPDX-License-Identifier: MIT\n"
              << ".TH VIREO 1 \"\" \"vireo " VIREO_VERSION "\" \"User Commands\"\n"
              << ".SH NAME\nvireo \\- classic video filters for pictures and video\n"
              << ".SH SYNOPSIS\n";
    for (const CLI::App* command : allCommands(program))
        std::cout << escaped(usageLine(*command)) << "\n.br\n";
    std::cout << ".SH DESCRIPTION\n"
              << escaped(programDescription) << '\n'
              << ".SH OPTIONS\n"
              << optionsText(program);
    std::cout << ".SH COMMANDS\n";
    for (const CLI::App* command : allCommands(program)) std::cout << commandText(*command);
    std::cout << filtersText(catalogue) << presetsText() << footerText(program.get_footer(), ".SH")
              << surroundings;
}

}  // namespace

void addManCommand(CommandSet& commands) {
    CLI::App& command =
        commands.add("man", "Print the manual page", [&program = commands.program()](Session& session) {
            printManual(program, session.catalogue());
            return 0;
        });
    command.footer("Example:\n  vireo man | man -l -");
}

}  // namespace vireo
