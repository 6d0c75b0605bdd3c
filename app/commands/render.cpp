// SPDX-License-Identifier: MIT
// vireo render.
#include "app/base/files.h"
#include "app/base/messages.h"
#include "app/base/output_file.h"
#include "app/commands/commands.h"
#include "app/commands/output_options.h"
#include "app/commands/render_options.h"
#include "app/commands/render_report.h"
#include "engine/error.h"

#include <algorithm>
#include <memory>
#include <set>

namespace vireo {
namespace {

constexpr char renderExamples[] = R"help(Filters and parameters:
  -f Solarize                                     with the filter's own defaults
  -f "sol:thr=100"                                any unambiguous beginning, without case and blanks
  -f "Solarize:threshold=40%"                     per cent, where it displays 0 to 100 or 0 to 200
  -f "Color Replace:target color=#ff0000, replace color=rgb(0,80,255), solid colors=on"
  -f "Solarize:from=2s,to=120f,mix=50%"           a stretch of the clip, half over the source
  -f "Levels:(rgb) gamma=130" -f "Camera Blur"    one after the other
  --preset vhs -f "Vertical Flip"                 a ready-made look, then a filter

Key frames, in seconds (5s, 2.5, 1:02:03.5) or frames (120f) of the whole clip:
  -f "Solarize:threshold=0@0s..254@5s..100@8s"    linear between the keys
  -f "Solarize:threshold=0@0f..hold..200@50f..smooth..0@100f"

Files:
  vireo render photo.jpg out.png -f Solarize
  vireo render clip.mp4 out.mkv -f Levels --frames 100-199
  vireo render clip.mov out.mp4 -f Extract --encoder libx265 --encoder-option crf=22
  vireo render frame%04d.png out.mov -f "Camera Blur:percent blur=10"
  vireo render *.jpg --to filtered -f "Gamma:gamma=14"
  vireo render clip.mov out.mp4 --quality 80 --output small.webm --quality 40 -f Ghosting
  vireo render - - --format y4m -f Ghosting < in.mkv | ffplay -

For programs:
  vireo render clip.mov out.mp4 -f Levels --dry-run --json
  vireo render clip.mov out.mp4 -f Levels --progress json --json 2> progress

Settings:
  vireo render in.png out.png -f "Extract:softness=20" --save-settings look.json
  vireo render clip.mov out.mov --settings look.json
  vireo render clip.mov out.mov --lvl warm.lvl
  vireo render clip.mov out.mov -f Levels --settings-bytes levels.bin)help";

struct RenderCommandOptions : RenderOptions {
    bool json = false;
};

/// One job for an input and its outputs, or one for each input into the folder.
std::vector<RenderJob> planJobs(const RenderJob& common, const CLI::App& command,
                                const RenderOptions& options) {
    std::vector<RenderJob> jobs;
    const auto plan = [&](const std::string& input, const std::string& output) {
        RenderJob job = common;
        job.input = input;
        job.output = output;
        jobs.push_back(withOutputs(job, command, !output.empty()));
    };
    if (!options.outputs.empty() && !options.folder.empty())
        throw Error(Fault::Usage, "--to goes without --output");
    if (options.folder.empty()) {
        if (options.files.size() == 1 && !options.outputs.empty()) {
            plan(options.files[0], {});
            return jobs;
        }
        if (options.files.size() != 2) {
            throw Error(Fault::Usage, options.files.size() < 2 ? "render takes an input and an output"
                                                               : "several inputs need --to and a folder");
        }
        plan(options.files[0], options.files[1]);
        return jobs;
    }
    if (options.files.empty()) throw Error(Fault::Usage, "--to needs at least one input");
    std::set<std::string> outputs;
    for (const std::string& input : options.files) {
        if (input == "-")
            throw Error(Fault::Usage, "standard input has no name to be written under in a folder");
        const std::string output = utf8Of(pathOf(options.folder) / pathOf(input).filename());
        if (!outputs.insert(output).second)
            throw Error(Fault::Usage, "two inputs would be written to " + output);
        plan(input, output);
        jobs.back().folderIsMade = true;
    }
    return jobs;
}

void makeFolder(const std::string& name, bool isDryRun) {
    const std::filesystem::path folder = pathOf(name);
    std::error_code error;
    if (isDryRun && !std::filesystem::exists(folder, error)) {
        checkOutputFolder(folder, true);
        return;
    }
    if (!isDryRun) std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder, error)) throw Error("cannot make the folder " + name);
}

/// Says why a job fails, where it does.
RenderOutcome outcomeOf(const RenderJob& job, FrameProcessor& chain, bool isOneOfMany) {
    RenderOutcome outcome{job.input, job.outputs()};
    // A dry run's result holds its notices.
    Messages messages(job.quiet || job.dryRun, job.progress, job.output);
    try {
        outcome.summary = runJob(job, chain, messages);
    } catch (const Error& failure) {
        outcome.status = failure.status();
        outcome.error = failure.what();
    } catch (const std::exception& failure) {
        outcome.status = 1;
        outcome.error = (isOneOfMany ? job.input + ": " : std::string()) + failure.what();
    }
    if (outcome.status != 0) printError(outcome.error);
    outcome.messages = messages.said();
    return outcome;
}

/// A bad input does not stop the others.
int renderAll(const std::vector<RenderJob>& jobs, FrameProcessor& chain, bool isOneOfMany,
              std::vector<RenderOutcome>& outcomes) {
    int status = 0;
    for (const RenderJob& job : jobs) {
        outcomes.push_back(outcomeOf(job, chain, isOneOfMany));
        const int own = outcomes.back().status;
        const bool isInterrupted = own > 2;
        if (isInterrupted || !isOneOfMany) return own;
        if (own != 0) status = 1;
    }
    return status;
}

void refuseMixedOutput(const RenderJob& job, bool json) {
    const std::vector<std::string> outputs = job.outputs();
    if (job.dryRun || std::find(outputs.begin(), outputs.end(), "-") == outputs.end()) return;
    if (json) throw Error(Fault::Usage, "standard output takes the pictures or --json, not both");
    if (job.progress.json && job.progress.file == job.pipe)
        throw Error(Fault::Usage, "standard output takes the pictures or the progress, not both");
}

void renderFiles(Session& session, const CLI::App& command, const RenderCommandOptions& options,
                 RenderReport& report) {
    const ChainOptions chainOptions = readChain(session.catalogue(), options);
    report.chain = chainOptions.filters;
    const bool isDryRun = options.job.dryRun;
    const bool saves = !options.saveSettings.empty() || !chainOptions.savedBytes.empty();
    if (options.files.empty() && saves) {
        refuseTakenNames(chainOptions, options);
        if (!isDryRun) saveSettings(chainOptions, options);
        return;
    }
    const std::vector<RenderJob> jobs = planJobs(commonJob(session.global(), options), command, options);
    for (const RenderJob& job : jobs) refuseMixedOutput(job, options.json);
    const auto chain = chainOf(chainOptions, options);
    refuseTakenNames(chainOptions, options);
    const bool isOneOfMany = !options.folder.empty();
    if (isOneOfMany) makeFolder(options.folder, isDryRun);
    report.status = renderAll(jobs, *chain, isOneOfMany, report.outcomes);
    const bool isInterrupted = report.status > 2;
    if (!isDryRun && (report.status == 0 || (isOneOfMany && !isInterrupted)))
        saveSettings(chainOptions, options);
}

/// Whoever reads JSON gets some, whatever happens.
int renderAndReport(Session& session, const CLI::App& command, const RenderCommandOptions& options) {
    RenderReport report;
    report.isDryRun = options.job.dryRun;
    try {
        renderFiles(session, command, options, report);
    } catch (const Error& failure) {
        report.status = failure.status();
        report.error = failure.what();
        printError(failure.what());
    }
    printReport(report, options.json);
    return report.status;
}

}  // namespace

void addRenderCommand(CommandSet& commands) {
    const auto options = std::make_shared<RenderCommandOptions>();
    const auto self = std::make_shared<const CLI::App*>();
    CLI::App& command = commands.add(
        "render", "Render pictures, sequences or video through filters",
        [options, self](Session& session) { return renderAndReport(session, **self, *options); });
    *self = &command;
    addRenderOptions(command, *options);
    command.option_defaults()->group("Output");
    addOutputs(command, *options);
    command.option_defaults()->group("Options");
    command.add_flag("--dry-run", options->job.dryRun,
                     "Tell what would be rendered from and to, with the status; write nothing");
    command.add_flag("--json", options->json, "Tell what was done, or would be, as JSON on standard output");
    command.footer(renderExamples);
}

}  // namespace vireo
