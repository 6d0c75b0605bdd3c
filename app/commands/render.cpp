// SPDX-License-Identifier: MIT
// vireo render.
#include "app/base/files.h"
#include "app/base/messages.h"
#include "app/commands/commands.h"
#include "app/commands/render_options.h"
#include "engine/error.h"

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
  vireo render - - --format y4m -f Ghosting < in.mkv | ffplay -

Settings:
  vireo render in.png out.png -f "Extract:softness=20" --save-settings look.json
  vireo render clip.mov out.mov --settings look.json
  vireo render clip.mov out.mov --lvl warm.lvl
  vireo render clip.mov out.mov -f Levels --settings-bytes levels.bin)help";

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
    }
    return jobs;
}

/// Renders into a folder; a bad input does not stop the others.
int runMany(const std::vector<RenderJob>& jobs, FrameProcessor& chain, const std::string& folder) {
    std::error_code error;
    std::filesystem::create_directories(pathOf(folder), error);
    if (!std::filesystem::is_directory(pathOf(folder), error))
        throw Error("cannot make the folder " + folder);
    int status = 0;
    for (const RenderJob& job : jobs) {
        try {
            runJob(job, chain);
        } catch (const Error& failure) {
            if (failure.status() > 2) throw;  // interrupted
            printError(failure.what());
            status = 1;
        } catch (const std::exception& failure) {
            printError(job.input + ": " + failure.what());
            status = 1;
        }
    }
    return status;
}

int renderFiles(Session& session, const RenderOptions& options) {
    const ChainOptions chainOptions = readChain(session.catalogue(), options);
    const bool saves = !options.saveSettings.empty() || !chainOptions.savedBytes.empty();
    if (options.files.empty() && saves) {
        refuseTakenNames(chainOptions, options);
        saveSettings(chainOptions, options);
        return 0;
    }
    const std::vector<RenderJob> jobs = planJobs(commonJob(session.global(), options), options);
    const auto chain = chainOf(chainOptions, options);
    refuseTakenNames(chainOptions, options);
    int status = 0;
    if (options.folder.empty()) {
        runJob(jobs.front(), *chain);
    } else {
        status = runMany(jobs, *chain, options.folder);
    }
    saveSettings(chainOptions, options);
    return status;
}

}  // namespace

void addRenderCommand(CommandSet& commands) {
    const auto options = std::make_shared<RenderOptions>();
    CLI::App& command = commands.add("render", "Render pictures, sequences or video through filters",
                                     [options](Session& session) { return renderFiles(session, *options); });
    addRenderOptions(command, *options);
    command.footer(renderExamples);
}

}  // namespace vireo
