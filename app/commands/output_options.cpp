// SPDX-License-Identifier: MIT
#include "app/commands/output_options.h"

#include "app/commands/render_options.h"
#include "engine/error.h"

#include <algorithm>
#include <map>
#include <set>

namespace vireo {
namespace {

constexpr const char* ofOutputs[] = {"--encoder", "--encoder-option", "--pixel-format",
                                     "--format",  "--quality",        "--two-pass",
                                     "--alpha",   "--no-audio",       "--start-number"};

/// The job as it is without any option of outputs.
RenderJob plain(RenderJob job) {
    const RenderJob none;
    job.encoder = none.encoder;
    job.encoderOptions = none.encoderOptions;
    job.pixelFormat = none.pixelFormat;
    job.format = none.format;
    job.quality = none.quality;
    job.twoPass = none.twoPass;
    job.alpha = none.alpha;
    job.noAudio = none.noAudio;
    job.startNumber = none.startNumber;
    return job;
}

void set(RenderJob& job, const std::string& name, const std::string& value) {
    if (name == "--encoder") job.encoder = value;
    if (name == "--encoder-option") job.encoderOptions.push_back(parseEncoderOption(value));
    if (name == "--pixel-format") job.pixelFormat = value;
    if (name == "--format") job.format = value;
    if (name == "--quality") job.quality = std::stoi(value);
    if (name == "--two-pass") job.twoPass = true;
    if (name == "--alpha") job.alpha = true;
    if (name == "--no-audio") job.noAudio = true;
    if (name == "--start-number") job.startNumber = std::stoll(value);
}

void refuseSameNames(const std::vector<RenderJob>& outputs) {
    std::set<std::string> names;
    for (const RenderJob& output : outputs) {
        if (!names.insert(output.output).second)
            throw Error(Fault::Usage, "two outputs would be written to " + output.output);
    }
}

}  // namespace

void addOutputs(CLI::App& command, RenderOptions& options) {
    command
        .add_option(
            "--output", options.outputs,
            "One more output of the same render, repeatable; the options of Output that follow are its own")
        ->allow_extra_args(false)
        ->type_name("FILE");
    for (const char* name : ofOutputs) {
        CLI::Option* option = command.get_option(name);
        if (option->get_expected_max() == 1 && std::string_view(name) != "--encoder-option")
            option->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }
}

RenderJob withOutputs(const RenderJob& job, const CLI::App& command, bool hasOut) {
    std::vector<RenderJob> outputs{plain(job)};
    std::map<const CLI::Option*, std::size_t> taken;
    std::set<std::string> given;
    for (const CLI::Option* option : command.parse_order()) {
        const std::string name = option->get_name();
        const std::vector<std::string>& values = option->results();
        const std::size_t index = taken[option]++;
        const std::string value = index < values.size() ? values[index] : std::string();
        if (name == "--output") {
            outputs.push_back(plain(job));
            outputs.back().output = value;
            given.clear();
            continue;
        }
        if (std::find(std::begin(ofOutputs), std::end(ofOutputs), name) == std::end(ofOutputs)) continue;
        if (outputs.size() == 1 && !hasOut)
            throw Error(Fault::Usage, name + " stands before the first --output and so belongs to no output");
        if (!given.insert(name).second && name != "--encoder-option")
            throw Error(Fault::Usage, name + " is given twice for " + outputs.back().output);
        set(outputs.back(), name, value);
    }
    if (!hasOut) outputs.erase(outputs.begin());
    refuseSameNames(outputs);
    RenderJob all = outputs.front();
    all.alsoTo.assign(outputs.begin() + 1, outputs.end());
    return all;
}

}  // namespace vireo
