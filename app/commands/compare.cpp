// SPDX-License-Identifier: MIT
// vireo compare: before and after in one picture.
#include "app/base/files.h"
#include "app/commands/commands.h"
#include "app/commands/render_options.h"
#include "engine/error.h"

#include <memory>

namespace vireo {
namespace {

constexpr char compareExamples[] = R"help(Examples:
  vireo compare photo.jpg -f "Solarize:threshold=60%"    in photo-compared.jpg
  vireo compare clip.mov before-after.mp4 --preset vhs   with the sound of the clip
  vireo compare clip.mp4 still.png -f Levels --frames 120-120
  vireo compare frame%04d.png both%04d.png -f "Camera Blur" --layout split
  vireo compare logo.png both.png -f "Edge Feather"      a checkerboard shows transparency)help";

struct CompareOptions : RenderOptions {
    std::string layout = "auto";
};

/// "photo-compared.jpg" for "photo.jpg", in the same folder.
std::string outputBeside(const std::string& input) {
    if (input == "-")
        throw Error(Fault::Usage, "standard input has no name to make the output's of; name one");
    std::filesystem::path path = pathOf(input);
    const std::filesystem::path extension = path.extension();
    path.replace_extension();
    path += "-compared";
    path += extension;
    return utf8Of(path);
}

int compare(Session& session, const CompareOptions& options) {
    const ChainOptions chainOptions = readChain(session.catalogue(), options);
    RenderJob job = commonJob(session.global(), options);
    if (job.output.empty()) job.output = outputBeside(job.input);
    const auto chain = chainOf(chainOptions, options);
    Comparison comparison(*chain, {layoutNamed(options.layout), job.alpha});
    refuseTakenNames(chainOptions, options);
    runJob(job, comparison);
    saveSettings(chainOptions, options);
    return 0;
}

}  // namespace

void addCompareCommand(CommandSet& commands) {
    const auto options = std::make_shared<CompareOptions>();
    CLI::App& command = commands.add("compare", "Show before and after in one picture or video",
                                     [options](Session& session) { return compare(session, *options); });
    command
        .add_option("input", options->job.input, "A picture, a sequence or video, as in vireo render --help")
        ->required()
        ->type_name("IN");
    command.add_option("output", options->job.output, "Else NAME-compared, beside the input")
        ->type_name("OUT");
    command.option_defaults()->group("Comparison");
    command
        .add_option("--layout", options->layout,
                    "The result beside the source or below it, or half of each; auto is beside, and below "
                    "for frames twice as wide as high")
        ->check(oneOf({"auto", "beside", "below", "split"}))
        ->type_name("auto|beside|below|split");
    addChainOptions(command, *options);
    addInputOptions(command, *options);
    addOutputOptions(command, *options);
    addWorkOptions(command, *options);
    command.footer(compareExamples);
}

}  // namespace vireo
