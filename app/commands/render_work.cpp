// SPDX-License-Identifier: MIT
#include "app/commands/render_work.h"

#include "app/base/files.h"
#include "app/base/output_file.h"
#include "app/commands/confinement.h"
#include "app/commands/input_list.h"
#include "app/commands/output_options.h"
#include "app/commands/render_options.h"
#include "app/commands/render_queue.h"
#include "engine/error.h"

#include <algorithm>
#include <map>

namespace vireo {
namespace {

/// One job for an input and its output, or one for each input into the folder.
void planJobs(const RenderJob& common, RenderWork& work) {
    const RenderWorkOptions& options = work.options;
    const auto plan = [&](const std::string& input, const std::string& output) {
        RenderJob job = common;
        job.input = input;
        job.output = output;
        job.folderIsMade = work.isOneOfMany;
        work.jobs.push_back(withOutputs(job, *options.command, !output.empty()));
    };
    if (!options.outputs.empty() && work.isOneOfMany) throw Error(Fault::Usage, "--to goes without --output");
    if (!work.isOneOfMany) {
        const bool hasOut = options.files.size() != 1 || options.outputs.empty();
        if (hasOut && options.files.size() != 2) {
            throw Error(Fault::Usage, options.files.size() < 2 ? "render takes an input and an output"
                                                               : "several inputs need --to and a folder");
        }
        std::error_code error;
        if (std::filesystem::is_directory(pathOf(options.files[0]), error))
            throw Error(Fault::Usage, options.files[0] + " is a folder; --to tells where its outputs go");
        plan(options.files[0], hasOut ? options.files[1] : std::string());
        return;
    }
    if (options.files.empty()) throw Error(Fault::Usage, "--to needs at least one input");
    InputList list = listInputs({options.files, options.folder, options.recursive, options.name});
    for (const RenderFiles& files : list.files) plan(files.input, files.output);
    work.passedOver = std::move(list.passedOver);
}

void refuseUnresumable(const RenderWork& work) {
    for (const RenderJob& job : work.jobs) {
        if (job.input == "-" || job.output == "-")
            throw Error(Fault::Usage, "--resume goes on with files, not with standard input or output");
        if (!job.alsoTo.empty()) throw Error(Fault::Usage, "--resume goes without --output");
        if (job.input == job.output)
            throw Error(Fault::Usage, "--resume reads its input again, so that it cannot be replaced");
    }
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

int statusOf(const RenderWork& work, const std::vector<RenderOutcome>& outcomes) {
    int status = 0;
    for (const RenderOutcome& outcome : outcomes) {
        const bool isInterrupted = outcome.status > 2;
        if (isInterrupted || !work.isOneOfMany) return outcome.status;
        if (outcome.status != 0) status = 1;
    }
    return status;
}

/// What became of many.
void tellSummary(const std::vector<RenderOutcome>& outcomes, std::size_t planned,
                 const std::vector<std::string>& passedOver, bool quiet) {
    Messages messages(quiet);
    if (!passedOver.empty()) {
        constexpr std::size_t most = 5;
        std::string names;
        for (std::size_t i = 0; i < std::min(most, passedOver.size()); ++i)
            names += (i == 0 ? "" : ", ") + passedOver[i];
        messages.tell(std::to_string(passedOver.size()) +
                      (passedOver.size() == 1 ? " file that is no picture or video was passed over: "
                                              : " files that are no pictures or video were passed over: ") +
                      names + (passedOver.size() > most ? "..." : ""));
    }
    if (planned < 2) return;
    const RenderCounts counts = countsOf(outcomes);
    std::string failed;
    for (const RenderOutcome& outcome : outcomes) {
        if (outcome.status == 0 || outcome.status > 2) continue;
        failed += (failed.empty() ? ": " : ", ") + outcome.input;
    }
    const std::int64_t rest =
        static_cast<std::int64_t>(planned) - counts.done - counts.skipped - counts.failed;
    messages.tell(std::to_string(counts.done) + " done, " + std::to_string(counts.skipped) + " skipped, " +
                  (rest > 0 ? std::to_string(rest) + " not rendered, " : "") + std::to_string(counts.failed) +
                  " failed" + failed);
}

}  // namespace

void addRenderWorkOptions(CLI::App& command, RenderWorkOptions& options) {
    options.command = &command;
    CLI::Option* folder = command.get_option("--to");
    command.option_defaults()->group("Output");
    command
        .add_option("--name", options.name,
                    "Names in that folder, of {stem}, {ext}, {name} and {number}: \"{stem}-solar{ext}\"")
        ->needs(folder)
        ->type_name("NAME");
    command
        .add_flag("--skip-existing", options.skipExisting,
                  "Leave as they are outputs that are there and whole")
        ->excludes("--overwrite");
    command.add_flag("--resume", options.resume,
                     "Render in segments, so that the same command goes on after an interruption");
    addOutputs(command, options);
    command.option_defaults()->group("Input");
    command.add_flag("--recursive", options.recursive, "Folders among the inputs with all their folders")
        ->needs(folder);
}

RenderWork understood(Session& session, const RenderWorkOptions& options) {
    RenderWork work{session, options, readChain(session.catalogue(), options),
                    {},      {},      !options.folder.empty()};
    const bool saves = !options.saveSettings.empty() || !work.chain.savedBytes.empty();
    if (!options.files.empty() || !saves) {
        planJobs(commonJob(session.global(), options), work);
        if (options.resume) refuseUnresumable(work);
        chainOf(work.chain, options);
    }
    refuseTakenNames(work.chain, options);
    return work;
}

void refuseMixedOutput(const RenderWork& work, bool json) {
    for (const RenderJob& job : work.jobs) {
        const std::vector<std::string> outputs = job.outputs();
        if (job.dryRun || std::find(outputs.begin(), outputs.end(), "-") == outputs.end()) continue;
        if (json) throw Error(Fault::Usage, "standard output takes the pictures or --json, not both");
        if (job.progress.json && job.progress.file == job.pipe)
            throw Error(Fault::Usage, "standard output takes the pictures or the progress, not both");
    }
}

std::vector<RenderReport> doAll(const std::vector<RenderWork>& works, int jobs) {
    std::vector<QueuedRender> renders;
    std::vector<std::string> passedOver;
    Confinement confinement;
    for (const RenderWork& work : works) {
        if (work.isOneOfMany) makeFolder(work.options.folder, work.options.job.dryRun);
        confinement.add(work.options);
        for (const RenderJob& job : work.jobs) {
            renders.push_back({&work, &job});
            confinement.add(job);
            // Segments lie beside the output until they are joined.
            const bool keepsSegments = work.options.resume && !job.dryRun;
            if (keepsSegments) confinement.keep(pathOf(job.output).parent_path());
        }
        passedOver.insert(passedOver.end(), work.passedOver.begin(), work.passedOver.end());
    }
    if (!renders.empty()) confinement.enter(works.front().session.global());
    const std::vector<RenderOutcome> outcomes = renderQueue(renders, jobs);

    std::vector<RenderReport> reports;
    std::size_t told = 0;
    const int last = outcomes.empty() ? 0 : outcomes.back().status;
    const bool isInterrupted = last > 2;
    for (const RenderWork& work : works) {
        RenderReport& report = reports.emplace_back();
        report.isDryRun = work.options.job.dryRun;
        report.chain = work.chain.filters;
        report.passedOver = work.passedOver;
        report.planned = work.jobs.size();
        for (; told < outcomes.size() && report.outcomes.size() < work.jobs.size(); ++told)
            report.outcomes.push_back(outcomes[told]);
        report.status = report.outcomes.size() < work.jobs.size() ? last : statusOf(work, report.outcomes);
        if (!report.isDryRun && !isInterrupted && (report.status == 0 || work.isOneOfMany))
            saveSettings(work.chain, work.options);
    }
    // A dry run's result holds all that.
    if (!renders.empty() && !renders.front().job->dryRun)
        tellSummary(outcomes, renders.size(), passedOver, renders.front().job->quiet);
    return reports;
}

}  // namespace vireo
