// SPDX-License-Identifier: MIT
// vireo export: a chain for other programs.
#include "app/base/files.h"
#include "app/base/messages.h"
#include "app/commands/commands.h"
#include "app/commands/exports.h"
#include "app/commands/render_options.h"
#include "engine/error.h"

#include <iostream>
#include <memory>

namespace vireo {
namespace {

struct ExportOptions {
    std::string clip;  ///< Empty: not known.
    RenderOptions chain;
    std::string frameRate;
    std::int64_t clipLength = 0;
    std::string commands;
    bool frei0r = false;
};

constexpr char exportExamples[] =
    R"help(The frei0r plug-ins, or the elements for GStreamer, must be where the other program looks for them.

Examples:
  ffmpeg -i in.mkv -vf "$(vireo export ffmpeg -f Solarize)" out.mkv
  ffmpeg -i in.mkv -vf "$(vireo export ffmpeg in.mkv --preset vhs --commands vhs.cmd)" out.mkv
  vireo export mlt in.mkv -f "Levels:(rgb) gamma=100@0s..160@4s" > look.mlt && melt look.mlt
  gst-launch-1.0 filesrc location=in.mkv ! decodebin ! \
      $(vireo export gstreamer -f Extract) ! autovideosink)help";

ExportedClip clipOf(const ExportOptions& options) {
    ClipFacts facts;
    if (!options.clip.empty()) facts = readClipFacts(options.clip, options.chain.job.policy);
    if (!options.frameRate.empty()) {
        facts.frameRate = parseFrameRate("--frame-rate", options.frameRate);
        facts.seconds.clear();
    }
    if (options.clipLength > 0) facts.frameCount = options.clipLength;
    return ExportedClip(std::move(facts));
}

using MakeExport = Export (*)(const std::vector<FilterSettings>&, const ExportedClip&, const ExportOptions&);

int exportChain(Session& session, const ExportOptions& options, MakeExport make) {
    const ChainOptions chain = readChain(session.catalogue(), options.chain);
    refuseTakenNames(chain, options.chain);
    const ExportedClip clip = clipOf(options);
    Export made = make(chain.filters, clip, options);
    if (!made.knowsFields && clip.facts().interlacing != Interlacing::Progressive)
        made.warnings.emplace_back(
            "the clip is interlaced, and frei0r filters take its frames as progressive");
    if (!options.clip.empty() && !clip.facts().isRgb)
        made.warnings.emplace_back(
            "the clip is not RGB, and what brings it to RGB there may round in another way");
    if (!made.commands.empty()) writeFile(options.commands, made.commands, options.chain.job.overwrite);
    saveSettings(chain, options.chain);
    Messages messages(session.global().quiet);
    for (const std::string& warning : made.warnings) messages.warning(MessageCode::DiffersThere, warning);
    std::cout << made.text << (made.text.ends_with('\n') ? "" : "\n");
    return 0;
}

CLI::App& addTarget(CommandSet& commands, CLI::App& family, const std::string& name,
                    const std::string& description, MakeExport make,
                    const std::shared_ptr<ExportOptions>& options) {
    CLI::App& command = commands.add(family, name, description, [options, make](Session& session) {
        return exportChain(session, *options, make);
    });
    command.add_option("clip", options->clip, "The clip, for its rate, its length and its frames' times")
        ->type_name("IN");
    addChainOptions(command, options->chain);
    command.option_defaults()->group("Clip");
    command.add_option("--frame-rate", options->frameRate, "Frames a second: 25, 29.97 or 30000/1001")
        ->type_name("RATE");
    command.add_option("--clip-length", options->clipLength, "Frames of the clip")
        ->check(wholeNumbers(1, largestNumber))
        ->type_name("N");
    addPolicyOptions(command, options->chain.job.policy);
    command.option_defaults()->group("Options");
    return command;
}

}  // namespace

void addExportCommand(CommandSet& commands) {
    CLI::App& family = commands.addFamily("export", "Hand a chain on to FFmpeg, MLT or GStreamer");
    family.footer(exportExamples);

    const auto ffmpeg = std::make_shared<ExportOptions>();
    CLI::App& forFfmpeg = addTarget(
        commands, family, "ffmpeg", "Print the chain as a filter graph for FFmpeg's -vf",
        [](const auto& chain, const ExportedClip& clip, const ExportOptions& options) {
            return exportForFfmpeg(exportedFilters(chain, clip), clip, options.commands);
        },
        ffmpeg);
    forFfmpeg.add_option("--commands", ffmpeg->commands, "Where key frames go, for FFmpeg's sendcmd filter")
        ->type_name("FILE");
    forFfmpeg.add_flag("--overwrite", ffmpeg->chain.job.overwrite, "Replace what exists");
    forFfmpeg.footer(exportExamples);

    const auto mlt = std::make_shared<ExportOptions>();
    addTarget(
        commands, family, "mlt", "Print the clip and its chain as a playlist for melt and editors",
        [](const auto& chain, const ExportedClip& clip, const ExportOptions& options) {
            if (options.clip.empty()) throw Error(Fault::Usage, "export mlt takes a clip");
            return exportForMlt(exportedFilters(chain, clip), clip, options.clip);
        },
        mlt)
        .footer(exportExamples);

    const auto gstreamer = std::make_shared<ExportOptions>();
    CLI::App& forGstreamer = addTarget(
        commands, family, "gstreamer", "Print the chain as elements for gst-launch-1.0",
        [](const auto& chain, const ExportedClip& clip, const ExportOptions& options) {
            return options.frei0r ? exportForFrei0rInGstreamer(exportedFilters(chain, clip), clip)
                                  : exportForGstreamer(chain, clip);
        },
        gstreamer);
    forGstreamer.add_flag("--frei0r", gstreamer->frei0r,
                          "Use the frei0r plug-ins, where there is no element vireo");
    forGstreamer.footer(exportExamples);
}

}  // namespace vireo
