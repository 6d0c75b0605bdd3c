// SPDX-License-Identifier: MIT
#include "app/commands/command_line.h"

#include "app/base/failures.h"
#include "app/base/files.h"
#include "app/base/log.h"
#include "app/base/messages.h"
#include "app/base/progress_signal.h"
#include "app/base/sandbox.h"
#include "app/commands/commands.h"
#include "app/commands/help.h"
#include "app/media/format_lists.h"
#include "engine/catalogue/host_identity.h"
#include "engine/commit.h"
#include "engine/error.h"
#include "engine/locations.h"
#include "simd/instruction_set.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <iostream>
#include <sstream>

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
    program.add_option("--log", options.log, "Keep everything that is said, behind what the file holds")
        ->type_name("FILE");
    program.add_option("--language", options.language, "The language of names, beside English")
        ->type_name("en|fr|de|ja|es|it|ko");
    program.add_option("--module", options.module, "The module to load instead of the one found")
        ->type_name("FILE");
    program
        .add_option("--application-type", options.applicationType, "The kind of host that the module sees")
        ->type_name("N");
    program.add_flag("--no-sandbox", options.noSandbox,
                     "Let what reads media use everything that the user may use");
    program.option_defaults()->group("Options");
    program.add_flag("--version", version,
                     "Print the version, the commit, the instruction set in use, the module's place and "
                     "whether there is a sandbox");
}

void addCommands(CommandSet& commands) {
    addRenderCommand(commands);
    addCompareCommand(commands);
    addPreviewCommand(commands);
    addSheetCommand(commands);
    addBatchCommand(commands);
    addFarmCommand(commands);
    addExportCommand(commands);
    addProbeCommand(commands);
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

const char* sandboxText(const GlobalOptions& global) {
    if (global.noSandbox) return "off";
    switch (sandboxStrength()) {
        case SandboxStrength::None: return "not available";
        case SandboxStrength::Partial: return "on in part";
        case SandboxStrength::Full: break;
    }
    return "on";
}

std::string versionText(const GlobalOptions& global) {
    std::string text = std::string("vireo " VIREO_VERSION ", commit ") + builtFrom() + ", instruction set " +
                       std::string(simd::instructionSetName(simd::chosenInstructionSet())) + '\n';
    try {
        text += "module " + utf8Of(findModule(global.module)) + '\n';
    } catch (const Error&) {
        text += "no module\n";
    }
    return text + "sandbox " + sandboxText(global) + '\n';
}

/// What a log needs to be understood later.
void beginLog(const GlobalOptions& global, const std::vector<std::string>& arguments) {
    if (global.log.empty()) return;
    openLog(global.log);
    std::istringstream lines(versionText(global) + codecVersions());
    for (std::string line; std::getline(lines, line);) logLine(line);
    const nlohmann::json words(arguments);
    logLine("command " + words.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
    std::error_code error;
    logLine("folder " + utf8Of(std::filesystem::current_path(error)));
}

int parseAndRun(CLI::App& program, std::vector<std::string> arguments) {
    GlobalOptions global;
    bool version = false;
    addGlobalOptions(program, global, version);
    CommandSet commands(program);
    addCommands(commands);
    const std::vector<std::string> given = arguments;
    try {
        std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
        program.parse(std::move(arguments));
        if (version) {
            std::cout << versionText(global);
            return 0;
        }
        beginLog(global, given);
        return run(commands, global);
    } catch (const CLI::CallForHelp&) {
        std::cout << program.help();
        return 0;
    } catch (const CLI::ParseError& error) {
        printError(sentenceOf(error));
        return wrongUsage;
    } catch (const std::exception& error) {
        printError(sentenceOf(error));
        return statusOf(error);
    }
}

}  // namespace

int runCommandLine(std::vector<std::string> arguments) {
    endInWordsWithoutMemory();
    takeProgressSignals();
    CLI::App program(introduction, "vireo");
    program.footer(examples);
    program.fallthrough();
    program.require_subcommand(0, 1);
    program.allow_windows_style_options(false);
    program.formatter(helpFormatter());
    const int status = parseAndRun(program, std::move(arguments));
    logLine("status " + std::to_string(status));
    return status;
}

}  // namespace vireo
