// SPDX-License-Identifier: MIT
// vireo compare: before and after in one picture.
#include "app/base/files.h"
#include "app/commands/commands.h"
#include "app/commands/confinement.h"
#include "app/commands/render_options.h"
#include "app/commands/table.h"
#include "app/render/measuring.h"
#include "engine/error.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

constexpr char compareExamples[] = R"help(Examples:
  vireo compare photo.jpg -f "Solarize:threshold=60%"    in photo-compared.jpg
  vireo compare clip.mov before-after.mp4 --preset vhs   with the sound of the clip
  vireo compare clip.mp4 still.png -f Levels --frames 120-120
  vireo compare frame%04d.png both%04d.png -f "Camera Blur" --layout split
  vireo compare clip.mov -f "Camera Blur" --metrics      how far the result is from the source
  vireo compare logo.png both.png -f "Edge Feather"      a checkerboard shows transparency)help";

struct CompareOptions : RenderOptions {
    std::string layout = "auto";
    bool metrics = false;
    bool json = false;
};

/// What is said of one frame or of all: decibels, of colours together and of each channel, and SSIM.
struct Metric {
    const char* name;
    double (*of)(const PictureDistance&);
};

constexpr Metric metrics[] = {
    {"psnr",
     [](const PictureDistance& d) {
         return peakSignalToNoise((d.squared[0] + d.squared[1] + d.squared[2]) / 3);
     }},
    {"red", [](const PictureDistance& d) { return peakSignalToNoise(d.squared[0]); }},
    {"green", [](const PictureDistance& d) { return peakSignalToNoise(d.squared[1]); }},
    {"blue", [](const PictureDistance& d) { return peakSignalToNoise(d.squared[2]); }},
    {"alpha", [](const PictureDistance& d) { return peakSignalToNoise(d.squared[3]); }},
    {"ssim", [](const PictureDistance& d) { return d.similarity.value_or(std::nan("")); }},
};

Json metricsJson(const PictureDistance& distance) {
    Json json = Json::object();
    for (const Metric& metric : metrics) {
        const double value = metric.of(distance);
        json[metric.name] = std::isfinite(value) ? Json(value) : Json();
    }
    return json;
}

TableRow metricsRow(const std::string& name, const PictureDistance& distance) {
    TableRow row{name};
    for (const Metric& metric : metrics) {
        const double value = metric.of(distance);
        char text[32];
        std::snprintf(text, sizeof text, metric.name == std::string_view("ssim") ? "%.6f" : "%.3f", value);
        row.emplace_back(std::isnan(value) ? "-" : text);
    }
    return row;
}

void printMetrics(const Measuring& measuring, bool asJson) {
    std::vector<PictureDistance> all;
    std::vector<TableRow> rows{{"Frame", "PSNR", "Red", "Green", "Blue", "Alpha", "SSIM"}};
    Json frames = Json::array();
    for (const auto& [number, distance] : measuring.distances()) {
        all.push_back(distance);
        rows.push_back(metricsRow(std::to_string(number), distance));
        Json frame{{"frame", number}};
        frame.update(metricsJson(distance));
        frames.push_back(std::move(frame));
    }
    const PictureDistance mean = meanOf(all);
    rows.push_back(metricsRow("all", mean));
    if (asJson) {
        std::cout << Json{{"frames", std::move(frames)}, {"all", metricsJson(mean)}}.dump(2) << '\n';
    } else {
        printTable(rows, "", 0);
    }
}

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
    if (job.output.empty() && !options.metrics) job.output = outputBeside(job.input);
    if (job.output == "-" && options.metrics)
        throw Error(Fault::Usage, "standard output takes the pictures or the metrics, not both");
    const auto chain = chainOf(chainOptions, options);
    Measuring measuring(*chain);
    FrameProcessor& shown = options.metrics ? static_cast<FrameProcessor&>(measuring) : *chain;
    Comparison comparison(shown, {layoutNamed(options.layout), job.alpha});
    refuseTakenNames(chainOptions, options);
    Confinement confinement;
    confinement.add(options);
    confinement.add(job);
    confinement.enter(session.global());
    runJob(job, job.output.empty() ? shown : comparison);
    if (options.metrics) printMetrics(measuring, options.json);
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
    command
        .add_option("output", options->job.output,
                    "Else NAME-compared, beside the input, unless --metrics asks for numbers alone")
        ->type_name("OUT");
    command.option_defaults()->group("Comparison");
    command
        .add_option("--layout", options->layout,
                    "The result beside the source or below it, or half of each; auto is beside, and below "
                    "for frames twice as wide as high")
        ->check(oneOf({"auto", "beside", "below", "split"}))
        ->type_name("auto|beside|below|split");
    CLI::Option* asksForMetrics = command.add_flag(
        "--metrics", options->metrics,
        "Print PSNR and SSIM of the result by frame and in all; without OUT no picture is written");
    command.add_flag("--json", options->json, "The metrics as JSON")->needs(asksForMetrics);
    addChainOptions(command, *options);
    addInputOptions(command, *options);
    addOutputOptions(command, *options);
    addProgressOptions(command, *options);
    addWorkOptions(command, *options);
    command.footer(compareExamples);
}

}  // namespace vireo
