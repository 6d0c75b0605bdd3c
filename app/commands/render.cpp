// SPDX-License-Identifier: MIT
// vireo render.
#include "app/base/failures.h"
#include "app/base/messages.h"
#include "app/commands/commands.h"
#include "app/commands/render_options.h"
#include "app/commands/render_work.h"
#include "engine/error.h"

#include <memory>

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
  vireo render photos --recursive --to warm --name "{stem}.png" --skip-existing --preset sepia
  vireo render - - --format y4m -f Ghosting < in.mkv | ffplay -

For programs:
  vireo render clip.mov out.mp4 -f Levels --dry-run --json
  vireo render clip.mov out.mp4 -f Levels --progress json --json 2> progress

Settings:
  vireo render in.png out.png -f "Extract:softness=20" --save-settings look.json
  vireo render clip.mov out.mov --settings look.json
  vireo render clip.mov out.mov --lvl warm.lvl
  vireo render clip.mov out.mov -f Levels --settings-bytes levels.bin)help";

struct RenderCommandOptions : RenderWorkOptions {
    bool json = false;
};

/// Whoever reads JSON gets some, whatever happens.
int renderAndReport(Session& session, const RenderCommandOptions& options) {
    RenderReport report;
    report.isDryRun = options.job.dryRun;
    try {
        std::vector<RenderWork> works{understood(session, options)};
        refuseMixedOutput(works.front(), options.json);
        report.chain = works.front().chain.filters;
        report = doAll(works, options.job.jobs).front();
    } catch (const std::exception& failure) {
        report.status = statusOf(failure);
        report.error = sentenceOf(failure);
        printError(report.error);
    }
    printReport(report, options.json);
    return report.status;
}

}  // namespace

void addRenderCommand(CommandSet& commands) {
    const auto options = std::make_shared<RenderCommandOptions>();
    CLI::App& command = commands.add("render", "Render pictures, sequences or video through filters",
                                     [options](Session& session) {
                                         options->given = givenOptions(*options->command, options->settings);
                                         return renderAndReport(session, *options);
                                     });
    addRenderOptions(command, *options);
    addRenderWorkOptions(command, *options);
    command.option_defaults()->group("Options");
    command.add_flag("--dry-run", options->job.dryRun,
                     "Tell what would be rendered from and to, with the status; write nothing");
    command.add_flag("--json", options->json, "Tell what was done, or would be, as JSON on standard output");
    command.footer(renderExamples);
}

}  // namespace vireo
