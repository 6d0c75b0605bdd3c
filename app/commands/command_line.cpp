// SPDX-License-Identifier: MIT
#include "app/commands/command_line.h"

#include "app/base/files.h"
#include "app/base/messages.h"
#include "app/commands/commands.h"
#include "app/commands/help.h"
#include "engine/catalogue/host_identity.h"
#include "engine/commit.h"
#include "engine/error.h"
#include "engine/locations.h"
#include "simd/instruction_set.h"

#include <algorithm>
#include <iostream>

namespace vireo {
namespace {

constexpr int wrongUsage = 2;

constexpr char introduction[] = "Twenty-two classic video filters for pictures and video.";

constexpr char examples[] = R"help(Examples:
  vireo list                                      the filters
  vireo info Levels                               a filter's parameters, ranges and defaults
  vireo render photo.jpg out.png -f Solarize
  vireo render clip.mov out.mov -f "Solarize:threshold=50%" -f "Edge Feather:amount=10"
  vireo render *.jpg --to filtered --preset vhs   many inputs, a ready-made look
  vireo compare photo.jpg -f "Levels:(rgb) gamma=140"
                                                  before and after, in photo-compared.jpg
  vireo preview clip.mov --preset vhs             in a window
  vireo sheet photo.jpg sheet.png                 every filter over one picture

Exit status:
  0    done
  1    failed: something cannot be read or written, or none of it is worth keeping
  2    wrong usage
  130  interrupted (Ctrl-C), 143 terminated

vireo COMMAND --help tells more, with examples.)help";

void addGlobalOptions(CLI::App& program, GlobalOptions& options, bool& version) {
    program.set_help_flag("--help,-h", "Print this help");
    program.option_defaults()->group(commonGroup);
    program.add_flag("--quiet", options.quiet, "Only errors on standard error");
    program.add_option("--language", options.language, "The language of names, beside English")
        ->type_name("en|fr|de|ja|es|it|ko");
    program.add_option("--module", options.module, "The module to load instead of the one found")
        ->type_name("FILE");
    program
        .add_option("--application-type", options.applicationType, "The kind of host that the module sees")
        ->type_name("N");
    program.option_defaults()->group("Options");
    program.add_flag("--version", version,
                     "Print the version, the commit, the instruction set in use and the module's place");
}

void addCommands(CommandSet& commands) {
    addRenderCommand(commands);
    addCompareCommand(commands);
    addPreviewCommand(commands);
    addSheetCommand(commands);
    addFarmCommand(commands);
    addExportCommand(commands);
    addListCommand(commands);
    addInfoCommand(commands);
    addPresetsCommand(commands);
    addSettingsCommand(commands);
    addCompletionCommand(commands);
    addManCommand(commands);
}

int run(const CommandSet& commands, const GlobalOptions& global) {
    const RunCommand* command = commands.chosen();
    if (command == nullptr) {
        throw Error(Fault::Usage,
                    "a command is missing, such as render, compare or list; vireo --help tells more");
    }
    present({global.applicationType, global.language});
    Session session(global);
    const int status = (*command)(session);
    std::cout.flush();
    if (!std::cout) throw Error("standard output cannot be written");
    return status;
}

void printVersion(const GlobalOptions& global) {
    std::cout << "vireo " VIREO_VERSION ", commit " << builtFrom() << ", instruction set "
              << simd::instructionSetName(simd::chosenInstructionSet()) << '\n';
    try {
        std::cout << "module " << utf8Of(findModule(global.module)) << '\n';
    } catch (const Error&) {
        std::cout << "no module\n";
    }
}

/// One sentence on one line, without its full stop.
std::string sentence(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

int runCommandLine(std::vector<std::string> arguments) {
    CLI::App program(introduction, "vireo");
    GlobalOptions global;
    bool version = false;
    program.footer(examples);
    program.fallthrough();
    program.require_subcommand(0, 1);
    program.allow_windows_style_options(false);
    program.formatter(helpFormatter());
    addGlobalOptions(program, global, version);
    CommandSet commands(program);
    addCommands(commands);
    try {
        std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
        program.parse(std::move(arguments));
        if (version) {
            printVersion(global);
            return 0;
        }
        return run(commands, global);
    } catch (const CLI::CallForHelp&) {
        std::cout << program.help();
        return 0;
    } catch (const CLI::ParseError& error) {
        printError(sentence(error.what()));
        return wrongUsage;
    } catch (const Error& error) {
        printError(error.what());
        return error.status();
    } catch (const std::exception& error) {
        printError(error.what());
        return 1;
    }
}

}  // namespace vireo
