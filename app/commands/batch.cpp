// SPDX-License-Identifier: MIT
// vireo batch: renders that a file describes.
#include "app/base/failures.h"
#include "app/base/files.h"
#include "app/base/messages.h"
#include "app/commands/batch_file.h"
#include "app/commands/commands.h"
#include "app/commands/render_options.h"
#include "app/commands/render_work.h"
#include "engine/error.h"

#include <iostream>
#include <iterator>
#include <map>
#include <memory>

namespace vireo {
namespace {

constexpr char batchExamples[] =
    R"help(A file of jobs is an array of JSON objects, or an object a line. Each has an input, an output and
whatever options vireo render has, by their long names; true stands for an option without value,
an array for one that is given several times. Names of files count from the file's folder. All
jobs are looked at before the first is rendered; those whose outputs are there are skipped.

  [{"input": "a.mov", "output": "a.mp4", "preset": "vhs", "encoder-option": ["crf=20"]},
   {"input": "b.mov", "output": "b.mp4", "filter": ["Levels:gamma=14", "Ghosting"]},
   {"input": "photos", "to": "filtered", "recursive": true, "settings": "look.json"}]

Examples:
  vireo batch jobs.json
  vireo batch jobs.json --overwrite --json > results.json
  generate-jobs | vireo batch -)help";

struct BatchOptions : RenderOptions {
    std::string file;
    bool json = false;
};

class Batch {
public:
    Batch(Session& session, const BatchOptions& options) : session_(session), options_(options) {}

    void read(const std::string& text) {
        const std::string name = options_.file == "-" ? "standard input" : options_.file;
        for (BatchEntry& entry : parseBatch(name, text)) understand(std::move(entry));
    }

    /// Throws Error where nothing was begun.
    BatchReport run() {
        BatchReport report;
        report.isDryRun = options_.job.dryRun;
        for (std::size_t i = 0; i < errors_.size(); ++i) {
            if (errors_[i].empty()) continue;
            RenderReport& wrong = report.jobs.emplace_back();
            wrong.job = i + 1;
            wrong.status = report.status = Error(Fault::Usage, errors_[i]).status();
            wrong.isDryRun = report.isDryRun;
            wrong.error = errors_[i];
            printError("job " + std::to_string(i + 1) + ": " + wrong.error);
        }
        if (report.status != 0) return report;
        report.jobs = doAll(works_, options_.job.jobs);
        for (std::size_t i = 0; i < report.jobs.size(); ++i) {
            report.jobs[i].job = i + 1;
            const int status = report.jobs[i].status;
            const bool isInterrupted = status > 2;
            if (report.status <= 2 && status != 0) report.status = isInterrupted ? status : 1;
        }
        return report;
    }

private:
    void understand(BatchEntry entry) {
        std::string& error = errors_.emplace_back(std::move(entry.error));
        if (!error.empty()) return;
        try {
            const auto& options = entries_.emplace_back(std::make_unique<RenderWorkOptions>());
            readBatchEntry(entry.json, *options);
            options->progress = options_.progress;
            options->progressFile = options_.progressFile;
            options->job.jobs = options_.job.jobs;
            options->job.dryRun = options_.job.dryRun;
            options->job.overwrite = options->job.overwrite || options_.job.overwrite;
            options->skipExisting = !options->job.overwrite;
            RenderWork work = understood(session_, *options);
            for (const RenderJob& job : work.jobs) {
                if (job.input == "-" || job.output == "-")
                    throw Error(Fault::Usage, "jobs of a batch read and write files");
                const auto [other, isNew] =
                    outputs_.emplace(pathOf(job.output).lexically_normal(), errors_.size());
                if (!isNew)
                    throw Error(Fault::Usage,
                                job.output + " is written by job " + std::to_string(other->second) + " too");
            }
            works_.push_back(std::move(work));
        } catch (const Error& failure) {
            error = failure.what();
        }
    }

    Session& session_;
    const BatchOptions& options_;
    std::vector<std::string> errors_;  ///< Of each job; empty where there is none.
    std::vector<std::unique_ptr<RenderWorkOptions>> entries_;
    std::vector<RenderWork> works_;
    std::map<std::filesystem::path, std::size_t> outputs_;
};

/// From here on names count from the folder of the file.
void enterFolder(const std::string& file) {
    const std::filesystem::path folder = pathOf(file).parent_path();
    std::error_code error;
    if (!folder.empty()) std::filesystem::current_path(folder, error);
    if (error) throw Error("cannot enter " + utf8Of(folder) + ": " + reasonOf(error));
}

int runBatch(Session& session, const BatchOptions& options) {
    BatchReport report;
    report.isDryRun = options.job.dryRun;
    std::string text;
    try {
        session.catalogue();  // Its own name counts from where the program was started.
        if (options.file != "-") {
            text = readFile(options.file);
            enterFolder(options.file);
        } else {
            text.assign(std::istreambuf_iterator<char>(std::cin), {});
        }
        Batch batch(session, options);
        batch.read(text);
        report = batch.run();
    } catch (const std::exception& failure) {
        report.status = statusOf(failure);
        report.error = sentenceOf(failure);
        printError(report.error);
    }
    printReport(report, options.json);
    return report.status;
}

}  // namespace

void addBatchCommand(CommandSet& commands) {
    const auto options = std::make_shared<BatchOptions>();
    CLI::App& command = commands.add("batch", "Render what a file of jobs describes",
                                     [options](Session& session) { return runBatch(session, *options); });
    command
        .add_option("file", options->file,
                    "The jobs, as a JSON array or as an object a line; - is standard input")
        ->required()
        ->type_name("FILE");
    addProgressOptions(command, *options);
    addWorkOptions(command, *options);
    command.add_flag("--overwrite", options->job.overwrite, "Do anew what is done, and replace what exists");
    command.add_flag("--dry-run", options->job.dryRun,
                     "Tell what would be rendered from and to, with the status; write nothing");
    command.add_flag("--json", options->json,
                     "Tell by job what was done, or would be, as JSON on standard output");
    command.footer(batchExamples);
}

}  // namespace vireo
