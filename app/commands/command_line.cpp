// SPDX-License-Identifier: MIT
#include "app/commands/command_line.h"

#include "app/commands/commands.h"
#include "app/commands/module_location.h"
#include "app/settings/clip_time.h"
#include "host/mtkcore/instruction_set.h"
#include "host/qrb/language.h"
#include "host/vireo_host.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <limits>
#include <map>

namespace vireo {
namespace {

constexpr int wrongUsage = 2;

constexpr std::int64_t largestNumber = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t mostJobs = 1024;

constexpr char introduction[] = "Twenty-two classic video filters for pictures and video.";

constexpr char examples[] = R"help(Examples:
  vireo list                                     the filters
  vireo info Levels                              a filter's parameters, ranges and defaults
  vireo render photo.jpg out.png -f Solarize
  vireo render clip.mov out.mov -f "Solarize:threshold=50%" -f "Edge Feather:amount=10"
  vireo sheet photo.jpg sheet.png                every filter over one picture

vireo COMMAND --help tells more, with examples.)help";

constexpr char renderExamples[] = R"help(Filters and parameters:
  -f "Solarize"                                  with the filter's own defaults
  -f "sol:thr=100"                               names by any unambiguous beginning, without case and blanks
  -f "Solarize:threshold=40%"                    per cent where a parameter displays 0 to 100 or 0 to 200
  -f "Color Replace:similarity=20, target color=#ff0000, solid colors=on, replace color=rgb(0,80,255)"
  -f "Solarize:from=2s,to=120f,mix=50%"          only a stretch of the clip, half over the source

Key frames, in seconds (5s, 2.5, 1:02:03.5) or frames (120f) of the whole clip:
  -f "Solarize:threshold=0@0s..254@5s..100@8s"   linear between the keys
  -f "Solarize:threshold=0@0f..hold..200@50f..smooth..0@100f"

Files:
  vireo render clip.mp4 out.mkv -f Levels --frames 100-199
  vireo render frame%04d.png out.mov -f "Camera Blur:percent blur=10"
  vireo render *.jpg --to filtered -f "Gamma:gamma=14"
  vireo render - - --format matroska -f Ghosting < in.mkv > out.mkv

Settings:
  vireo render in.png out.png -f "Extract:softness=20" --save-settings look.json
  vireo render clip.mov out.mov --settings look.json
  vireo render clip.mov out.mov --lvl warm.lvl
  vireo render clip.mov out.mov -f Levels --settings-bytes levels.bin)help";

constexpr char farmExamples[] =
    R"help(Takes everything that vireo render takes. All lines may run again at any time: only what is missing is done.

Examples:
  vireo farm plan in.mov out.mov -f Levels --segments 8 | sh
  vireo farm plan in.mov out.mov -f Levels --segments 64 --part segments | parallel
  vireo farm plan in.mov out.mov -f Levels --segments 64 --part join | sh)help";

struct LanguageName {
    std::string_view name;
    std::uint16_t id;
};
constexpr LanguageName languages[] = {
    {"en", QRB::makeLanguageID(QRB::kSubLanguage_Default, QRB::kLanguage_English)},
    {"fr", QRB::makeLanguageID(QRB::kSubLanguage_French, QRB::kLanguage_French)},
    {"de", QRB::makeLanguageID(QRB::kSubLanguage_German, QRB::kLanguage_German)},
    {"ja", QRB::makeLanguageID(QRB::kSubLanguage_Default, QRB::kLanguage_Japanese)},
    {"es", QRB::makeLanguageID(QRB::kSubLanguage_Spanish, QRB::kLanguage_Spanish)},
    {"it", QRB::makeLanguageID(QRB::kSubLanguage_Italian, QRB::kLanguage_Italian)},
    {"ko", QRB::makeLanguageID(QRB::kSubLanguage_Korean, QRB::kLanguage_Korean)}};

void setLanguage(const std::string& name) {
    const auto found = std::find_if(std::begin(languages), std::end(languages),
                                    [&](const LanguageName& language) { return language.name == name; });
    if (found == std::end(languages)) {
        throw RenderError("--language takes en, fr, de, ja, es, it or ko, not \"" + name + '"', wrongUsage);
    }
    vireoHostSetLanguage(found->id);
}

/// Everything that can stand on the command line.
struct Options {
    GlobalOptions global;
    bool version = false;
    ListOptions list;
    InfoOptions info;
    RenderOptions render;
    FarmOptions farm;
    SheetOptions sheet;
    DialogOptions dialog;
};

void addSettingsOption(CLI::App& command, const std::string& names, std::vector<SettingsOption>& settings,
                       SettingsOption::Kind kind, const std::string& description) {
    command
        .add_option_function<std::string>(
            names,
            [&settings, kind](const std::string& value) {
                settings.push_back({kind, value});
            },
            description)
        ->trigger_on_parse()
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

/// Lets an option take the whole numbers of a range.
CLI::Validator wholeNumbers(std::int64_t minimum, std::int64_t maximum) {
    return CLI::Validator(
        [minimum, maximum](const std::string& text) -> std::string {
            const auto value = parseWholeNumber(text);
            if (value && *value >= minimum && *value <= maximum) return {};
            return "takes whole numbers from " + std::to_string(minimum) + " to " + std::to_string(maximum) +
                   ", not \"" + text + '"';
        },
        "");
}

void addRenderOptions(CLI::App& command, RenderOptions& options) {
    command.add_option("files", options.files, "IN OUT, or IN... with --to; - is standard input or output")
        ->type_name("IN... OUT");
    using Kind = SettingsOption::Kind;
    addSettingsOption(command, "-f,--filter", options.settings, Kind::Filter,
                      "NAME:parameter=value,...; may be repeated");
    addSettingsOption(command, "--settings", options.settings, Kind::SettingsFile,
                      "A settings file: the chain, or the settings of the one -f");
    addSettingsOption(command, "--settings-bytes", options.settings, Kind::SettingsBytes,
                      "FILE or hex:...: the bytes of the settings handle of the -f before");
    addSettingsOption(command, "--lvl", options.settings, Kind::LevelsFile,
                      "A Levels file, with Levels or alone");
    command.add_option("--save-settings", options.saveSettings, "Write the chain as a settings file");
    addSettingsOption(command, "--save-settings-bytes", options.settings, Kind::SaveSettingsBytes,
                      "Write the settings handle of the -f before, whole");
    command.add_option("--filter-format", options.filterFormat,
                       "Pixel format for filters that offer it: bgra, vuya, or alone Bgra or BGra");

    RenderJob& job = options.job;
    command.add_option("--to", options.folder, "A folder for the outputs of many inputs");
    command.add_flag("--overwrite", job.overwrite, "Replace existing outputs");
    command.add_option("--frames", options.frames, "A-B, from 0, both included");
    command.add_option("--start", options.start, "Time of the first frame rendered");
    command.add_option("--duration", options.duration, "Time rendered");
    command.add_option("--clip-length", job.clipLength, "Frames of the input, where they cannot be counted")
        ->check(wholeNumbers(1, largestNumber));
    command.add_option("--start-number", job.startNumber, "Number of a sequence's first file")
        ->check(wholeNumbers(0, largestNumber));
    command.add_flag("--no-audio", job.noAudio, "Leave the sound out");
    command.add_flag("--alpha", job.alpha, "Keep alpha");
    command.add_flag("--premultiplied", job.premultiplied, "Colours of the source are multiplied by alpha");
    CLI::Option* progressive =
        command.add_flag("--progressive", options.progressive, "Frames are progressive, whatever they say");
    command
        .add_option("--interlaced", options.interlaced, "Frames are interlaced: tff or bff, the first field")
        ->check(CLI::IsMember({"tff", "bff"}))
        ->excludes(progressive);
    command.add_option("--encoder", job.encoder, "The encoder, by its library's name");
    command
        .add_option("--encoder-option", options.encoderOptions,
                    "NAME=VALUE, the encoder's own; may be repeated")
        ->allow_extra_args(false);
    command.add_option("--pixel-format", job.pixelFormat, "The output's pixel format");
    command.add_option("--format", job.format, "The container of standard output");
    command.add_flag("--strict", job.strict, "A damaged input is a failure");
    command.add_option("--jobs", job.jobs, "Frames rendered side by side")->check(wholeNumbers(1, mostJobs));
}

void addRenderCommand(CLI::App& program, RenderOptions& options) {
    CLI::App& command =
        *program.add_subcommand("render", "Render pictures, sequences or video through filters");
    command.footer(renderExamples);
    addRenderOptions(command, options);
}

void addFarmOptions(CLI::App& command, FarmOptions& options) {
    addRenderOptions(command, options.render);
    command.add_option("--segments", options.segments, "How many segments")
        ->required()
        ->check(wholeNumbers(1, largestNumber));
    command.add_flag("--keep", options.keep, "Keep the segments when they are joined");
}

void addFarmCommand(CLI::App& program, FarmOptions& options) {
    CLI::App& farm = *program.add_subcommand("farm", "Render one clip on many machines");
    farm.require_subcommand(1);
    CLI::App& plan =
        *farm.add_subcommand("plan", "Print the shell lines that render a clip in segments and join them");
    addFarmOptions(plan, options);
    plan.add_option("--part", options.part, "Only the lines of the segments, or of joining")
        ->check(CLI::IsMember({"segments", "join"}));
    plan.footer(farmExamples);
    addFarmOptions(*farm.add_subcommand("join", "Join the segments of a plan of the same options"), options);
}

/// The options that a command was given, in their order. `settings` are those among them that were taken out
/// while they were read.
std::vector<GivenOption> givenOptions(const CLI::App& command, const std::vector<SettingsOption>& settings) {
    std::vector<GivenOption> given;
    std::map<const CLI::Option*, std::size_t> taken;
    std::size_t settingsTaken = 0;
    for (const CLI::Option* option : command.parse_order()) {
        if (option->get_positional()) continue;
        const bool isFlag = option->get_expected_max() == 0;
        GivenOption& added = given.emplace_back(GivenOption{option->get_name(), std::nullopt});
        if (option->get_trigger_on_parse()) {
            added.value = settings[settingsTaken++].value;
        } else if (!isFlag) {
            added.value = option->results()[taken[option]++];
        }
    }
    return given;
}

void addSettingsCommand(CLI::App& program, DialogOptions& options) {
    CLI::App& command =
        *program.add_subcommand("settings", "Open a filter's settings dialog over a picture (Windows)");
    command.add_option("filter", options.filter, "Name, key, match name or id")
        ->required()
        ->type_name("FILTER");
    command.add_option("--image", options.image, "The picture")->required();
    command.add_option("--settings", options.settings, "A settings file to start from");
    command.add_option("--save-settings", options.saveSettings, "Where to write what was accepted");
    command.add_flag("--overwrite", options.overwrite, "Replace an existing settings file");
    command.footer("Example:\n  vireo settings Levels --image photo.png --save-settings look.json");
}

/// The whole command line; what is read from it lands in `options`.
void describeOptions(CLI::App& program, Options& options) {
    program.name("vireo");
    program.footer(examples);
    program.fallthrough();
    program.require_subcommand(0, 1);
    program.allow_windows_style_options(false);
    program.get_formatter()->column_width(36);
    program.set_help_flag("--help,-h", "Print this help");
    program.add_flag("--version", options.version, "Print the version and the instruction set in use");
    program.add_option("--application-type", options.global.applicationType,
                       "The kind of host that the module sees");
    program.add_option("--language", options.global.language, "en, fr, de, ja, es, it or ko");
    program.add_option("--module", options.global.module, "The module to load instead of the one found");
    program.add_flag("--quiet", options.global.quiet, "Only errors on standard error");

    CLI::App& list = *program.add_subcommand("list", "List the filters");
    list.add_flag("--json", options.list.json, "As JSON");

    CLI::App& info = *program.add_subcommand("info", "Describe a filter and its parameters");
    info.add_option("filter", options.info.filter, "Name, key, match name or id")
        ->required()
        ->type_name("FILTER");
    info.add_flag("--json", options.info.json, "As JSON");
    info.footer("Examples:\n  vireo info \"Color Replace\"\n  vireo info solar --json");

    addRenderCommand(program, options.render);
    addFarmCommand(program, options.farm);
    addSettingsCommand(program, options.dialog);

    CLI::App& sheet = *program.add_subcommand("sheet", "Render every filter over one picture, on one sheet");
    sheet.add_option("input", options.sheet.input, "A picture")->required()->type_name("IN");
    sheet.add_option("output", options.sheet.output, "The sheet, as large as the picture")
        ->required()
        ->type_name("OUT");
    sheet.add_flag("--overwrite", options.sheet.overwrite, "Replace an existing output");
    sheet.footer("Example:\n  vireo sheet photo.jpg sheet.png");
}

void runFarm(const CLI::App& program, const Catalogue& catalogue, const Options& options) {
    const CLI::App& command = *program.get_subcommand("farm")->get_subcommands().front();
    FarmOptions farm = options.farm;
    farm.given = givenOptions(command, farm.render.settings);
    for (GivenOption& option : givenOptions(program, {})) farm.given.push_back(std::move(option));
    (command.get_name() == "plan" ? planFarm : joinFarm)(catalogue, options.global, farm);
}

int runCommand(const CLI::App& program, const Options& options) {
    const GlobalOptions& global = options.global;
    if (global.applicationType) vireoHostSetApplicationType(*global.applicationType);
    if (!global.language.empty()) setLanguage(global.language);
    const VRM::MetaPlugin module(findModule(global.module));
    const Catalogue catalogue(module.filters());

    if (program.got_subcommand("list")) {
        listFilters(catalogue, options.list);
    } else if (program.got_subcommand("info")) {
        describeFilter(catalogue, options.info);
    } else if (program.got_subcommand("farm")) {
        runFarm(program, catalogue, options);
    } else if (program.got_subcommand("settings")) {
        editSettings(catalogue, options.dialog);
    } else if (program.got_subcommand("sheet")) {
        renderSheet(catalogue, global, options.sheet);
    } else {
        return renderFiles(catalogue, global, options.render);
    }
    return 0;
}

/// One sentence on one line, without its full stop.
std::string sentence(std::string text) {
    while (!text.empty() && (text.back() == '\n' || text.back() == '.')) text.pop_back();
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

}  // namespace

void printError(const char* message) { std::cerr << "vireo: " << message << ".\n"; }

int runCommandLine(std::vector<std::string> arguments) {
    CLI::App program(introduction);
    Options options;
    describeOptions(program, options);
    try {
        std::reverse(arguments.begin(), arguments.end());  // the parser takes them from the back
        program.parse(std::move(arguments));
        if (options.version) {
            std::cout << "vireo " VIREO_VERSION ", instruction set "
                      << mtkcore::instructionSetName(mtkcore::chosenInstructionSet()) << '\n';
            return 0;
        }
        if (program.get_subcommands().empty()) {
            throw RenderError(
                "a command is missing: list, info, render, farm, settings or sheet; vireo --help tells more",
                wrongUsage);
        }
        const int status = runCommand(program, options);
        std::cout.flush();
        if (!std::cout) throw RenderError("standard output cannot be written");
        return status;
    } catch (const CLI::CallForHelp&) {
        std::cout << program.help();
        return 0;
    } catch (const CLI::ParseError& error) {
        printError(sentence(error.what()).c_str());
        return wrongUsage;
    } catch (const RenderError& error) {
        printError(error.what());
        return error.status();
    } catch (const std::exception& error) {
        printError(error.what());
        return 1;
    }
}

}  // namespace vireo
