// SPDX-License-Identifier: MIT
// vireo preview: renders into a player's window.
#include "app/commands/commands.h"
#include "app/commands/confinement.h"
#include "app/commands/render_options.h"
#include "engine/error.h"

#include <functional>
#include <memory>

#if defined(_WIN32)
#include "app/base/files.h"
#include "app/preview/window_player.h"
#else
#include "app/commands/player.h"
#include "app/render/render_media.h"
#endif

namespace vireo {
namespace {

constexpr char previewExamples[] = R"help(Examples:
  vireo preview clip.mov -f "Camera Blur:percent blur=0@0s..40@4s"
  vireo preview photo.jpg --preset film --layout split
  vireo preview clip.mov --preset vhs --start 1:20 --duration 10s

The player is ffplay: q or Escape closes its window, the space bar pauses. Transparency shows
as a checkerboard. On Windows it is a window of vireo's own, without sound: comma and full stop
step by a frame, the arrows skip 5 seconds, the right button goes to a place of the clip, and 1
gives the window the picture's size.)help";

struct PreviewOptions : RenderOptions {
    std::string layout = "after";
};

/// Gets the process that shows the pictures.
using Confine = std::function<void(int)>;

#if defined(_WIN32)

void play(const RenderJob& job, FrameProcessor& processor, const std::string& chain, const Confine&) {
    const std::string name = utf8Of(pathOf(job.input).filename());
    playInWindow(job, processor, name + (chain.empty() ? "" : " \u2013 " + chain));
}

#else

void play(RenderJob job, FrameProcessor& processor, const std::string&, const Confine& confine) {
    Player player("vireo: " + job.input);
    job.output = "-";
    job.pipe = player.input();
    job.format = "nut";
    job.encoder = "rawvideo";
    job.pixelFormat = "bgr0";  // no player guesses the matrix of RGB
    job.quiet = true;
    job.atOnce = true;
    confine(player.process());
    try {
        renderMedia(job, processor);
        player.wait();
    } catch (const Error& error) {
        // Whoever closes the window has seen enough.
        const bool isInterrupted = error.status() > 2;
        if (isInterrupted || !player.isGone()) throw;
        player.wait();
    }
}

#endif

std::string namesOf(const std::vector<FilterSettings>& filters) {
    std::string names;
    for (const FilterSettings& settings : filters)
        names += (names.empty() ? "" : ", ") + settings.filter().properties.name;
    return names;
}

/// Without any filter the input is shown as it is.
ChainOptions chainToShow(Session& session, const PreviewOptions& options) {
    if (options.settings.empty() && options.saveSettings.empty()) return {};
    return readChain(session.catalogue(), options);
}

void preview(Session& session, const PreviewOptions& options) {
    const ChainOptions chainOptions = chainToShow(session, options);
    RenderJob job = commonJob(session.global(), options);
    const auto chain = chainOf(chainOptions, options);
    Comparison comparison(*chain, {layoutNamed(options.layout), false});
    refuseTakenNames(chainOptions, options);

    Confinement confinement;
    confinement.add(options);
    confinement.add(job);
    play(job, comparison, namesOf(chainOptions.filters),
         [&](int player) { confinement.enter(session.global(), player); });
    saveSettings(chainOptions, options);
}

}  // namespace

void addPreviewCommand(CommandSet& commands) {
    const auto options = std::make_shared<PreviewOptions>();
    CLI::App& command =
        commands.add("preview", "Render into a window, without a file", [options](Session& session) {
            preview(session, *options);
            return 0;
        });
    command
        .add_option("input", options->job.input, "A picture, a sequence or video, as in vireo render --help")
        ->required()
        ->type_name("IN");
    command.option_defaults()->group("Comparison");
    command
        .add_option("--layout", options->layout,
                    "after: the result alone (default); else before and after as in vireo compare --help")
        ->check(oneOf({"after", "beside", "below", "split"}))
        ->type_name("after|beside|below|split");
    addChainOptions(command, *options);
    addInputOptions(command, *options);
    command.option_defaults()->group("Output");
    command.add_flag("--no-audio", options->job.noAudio, "Leave the sound out");
    addWorkOptions(command, *options);
    command.footer(previewExamples);
}

}  // namespace vireo
