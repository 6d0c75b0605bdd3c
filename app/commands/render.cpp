// SPDX-License-Identifier: MIT
// vireo render.
#include "app/chain/filter_chain.h"
#include "app/commands/chain_options.h"
#include "app/commands/commands.h"
#include "app/commands/render_jobs.h"
#include "app/files.h"
#include "app/settings/clip_time.h"
#include "app/settings/names.h"

#include <cstdio>
#include <iostream>
#include <set>

namespace vireo {
namespace {

[[noreturn]] void fail(const std::string& sentence) { throw RenderError(sentence, 2); }

std::string quoted(const std::string& text) { return '"' + text + '"'; }

FrameRange parseFrames(const std::string& text) {
    const std::size_t dash = text.find('-');
    const auto first = parseWholeNumber(trimmed(std::string_view(text).substr(0, dash)));
    const auto last = dash == std::string::npos
                          ? std::nullopt
                          : parseWholeNumber(trimmed(std::string_view(text).substr(dash + 1)));
    if (!first || !last) fail("--frames takes A-B, two frame numbers from 0, not " + quoted(text));
    if (*first > *last)
        fail("--frames takes a first and a last frame, and " + quoted(text) + " ends before it begins");
    return {*first, *last};
}

ClipTime parseTime(const char* option, const std::string& text) {
    const auto time = parseClipTime(text);
    if (!time)
        fail(std::string(option) + " takes a time like 5s, 2.5, 1:02:03.5 or 120f, not " + quoted(text));
    return *time;
}

/// The part of the clip that is rendered. Where the frames are known before the clip is, it is a range of
/// frames.
void takePart(const RenderOptions& options, RenderJob& job) {
    if (!options.frames.empty()) {
        if (!options.start.empty() || !options.duration.empty())
            fail("--frames goes without --start and --duration");
        job.frames = parseFrames(options.frames);
        return;
    }
    std::optional<ClipTime> start, duration;
    if (!options.start.empty()) start = parseTime("--start", options.start);
    if (!options.duration.empty()) duration = parseTime("--duration", options.duration);
    if (!start && !duration) return;
    if (duration && (duration->frame ? *duration->frame == 0 : duration->seconds == 0))
        fail("--duration 0 leaves nothing to render");
    if (start && start->frame) job.frames = FrameRange{*start->frame, std::nullopt};
    if (start && !start->frame) job.start = start->seconds;
    if (!duration) return;
    if (!duration->frame) {
        job.duration = duration->seconds;
    } else if (job.start) {
        job.durationFrames = duration->frame;
    } else {
        const std::int64_t first = job.frames ? job.frames->first : 0;
        job.frames = FrameRange{first, lastOf(first, *duration->frame)};
    }
}

std::vector<std::pair<std::string, std::string>> parseEncoderOptions(const std::vector<std::string>& texts) {
    std::vector<std::pair<std::string, std::string>> options;
    for (const std::string& text : texts) {
        const std::size_t equals = text.find('=');
        if (equals == std::string::npos || equals == 0)
            fail("--encoder-option takes NAME=VALUE, not " + quoted(text));
        options.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    }
    return options;
}

/// One job for an input and its output, or one for each input into the folder.
std::vector<RenderJob> planJobs(const RenderJob& common, const RenderOptions& options) {
    std::vector<RenderJob> jobs;
    const auto plan = [&](const std::string& input, const std::string& output) {
        jobs.push_back(common);
        jobs.back().input = input;
        jobs.back().output = output;
    };
    if (options.folder.empty()) {
        if (options.files.size() != 2) {
            fail(options.files.size() < 2 ? "render takes an input and an output"
                                          : "several inputs need --to and a folder");
        }
        plan(options.files[0], options.files[1]);
        return jobs;
    }
    if (options.files.empty()) fail("--to needs at least one input");
    std::set<std::string> outputs;
    for (const std::string& input : options.files) {
        if (input == "-") fail("standard input has no name to be written under in a folder");
        const std::string output = utf8Of(pathOf(options.folder) / pathOf(input).filename());
        if (!outputs.insert(output).second) fail("two inputs would be written to " + output);
        plan(input, output);
    }
    return jobs;
}

void runJob(const RenderJob& job, FilterChain& chain) {
    const RenderSummary summary = renderMedia(job, chain);
    if (job.quiet || job.output == "-") return;
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.2f", summary.seconds);
    std::cerr << "vireo: " << job.output << ": " << summary.frames
              << (summary.frames == 1 ? " frame" : " frames") << " in " << seconds << " s.\n";
}

/// Renders into a folder; a bad input does not stop the others.
int runMany(const std::vector<RenderJob>& jobs, FilterChain& chain, const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(pathOf(folder), error);
    if (!std::filesystem::is_directory(pathOf(folder), error))
        throw RenderError("cannot make the folder " + folder);
    int status = 0;
    for (const RenderJob& job : jobs) {
        try {
            runJob(job, chain);
        } catch (const RenderError& failure) {
            if (failure.status() > 2) throw;  // interrupted
            printError(failure.what());
            status = 1;
        } catch (const std::exception& failure) {
            printError((job.input + ": " + failure.what()).c_str());
            status = 1;
        }
    }
    return status;
}

}  // namespace

std::optional<std::uint32_t> parseFormat(const std::string& name) {
    if (name.empty()) return std::nullopt;
    if (name.size() != 4)
        fail("--filter-format takes a code of four characters such as vuya, not " + quoted(name));
    const char characters[5] = {name[0], name[1], name[2], name[3], '\0'};
    return PixKit::formatCode(characters);
}

RenderJob commonJob(const GlobalOptions& global, const RenderOptions& options) {
    RenderJob job = options.job;
    job.quiet = global.quiet;
    takePart(options, job);
    job.encoderOptions = parseEncoderOptions(options.encoderOptions);
    if (options.progressive) job.interlacing = Interlacing::Progressive;
    if (options.interlaced == "tff") job.interlacing = Interlacing::TopFieldFirst;
    if (options.interlaced == "bff") job.interlacing = Interlacing::BottomFieldFirst;
    return job;
}

int renderFiles(const Catalogue& catalogue, const GlobalOptions& global, const RenderOptions& options) {
    const ChainOptions chainOptions = readChain(catalogue, options);
    const bool saves = !options.saveSettings.empty() || !chainOptions.savedBytes.empty();
    if (chainOptions.filters.empty())
        fail("no filter is given; -f NAME gives one, and vireo list tells their names");
    if (options.files.empty() && saves) {
        refuseTakenNames(chainOptions, options);
        saveSettings(chainOptions, options);
        return 0;
    }
    const std::vector<RenderJob> jobs = planJobs(commonJob(global, options), options);
    FilterChain chain(chainOptions.filters, options.job.jobs, parseFormat(options.filterFormat));
    refuseTakenNames(chainOptions, options);
    int status = 0;
    if (options.folder.empty()) {
        runJob(jobs.front(), chain);
    } else {
        status = runMany(jobs, chain, options.folder);
    }
    saveSettings(chainOptions, options);
    return status;
}

}  // namespace vireo
