// SPDX-License-Identifier: MIT
// vireo probe: what inputs are understood to be.
#include "app/commands/commands.h"
#include "app/commands/confinement.h"
#include "app/commands/render_options.h"
#include "app/commands/render_report.h"
#include "engine/error.h"

#include <iostream>
#include <memory>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

struct ProbeOptions : RenderOptions {
    bool json = false;
};

int probe(const GlobalOptions& global, const ProbeOptions& options) {
    const InterruptionGuard guard;
    const StopRequest stop;
    RenderJob job = commonJob(global, options);
    Confinement confinement;
    for (const std::string& name : options.files) {
        job.input = name;
        confinement.add(job);
    }
    confinement.enter(global);
    Json inputs = Json::array();
    int status = 0;
    for (const std::string& name : options.files) {
        job.input = name;
        Messages messages(true);
        try {
            const InputDescription input = probeInput(job, stop, messages);
            if (options.json) {
                Json json = inputJson(input);
                json["warnings"] = messagesJson(messages.said());
                inputs.push_back(std::move(json));
            } else {
                printInput(input);
                printMessages(messages.said());
            }
        } catch (const Error& failure) {
            throwIfInterrupted();
            inputs.push_back({{"name", name}, {"error", failure.what()}});
            printError(failure.what());
            status = 1;
        }
    }
    if (options.json) {
        const Json json{{"status", status}, {"inputs", std::move(inputs)}};
        std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
    }
    return status;
}

}  // namespace

void addProbeCommand(CommandSet& commands) {
    const auto options = std::make_shared<ProbeOptions>();
    CLI::App& command =
        commands.add("probe", "Tell what inputs are understood to be",
                     [options](Session& session) { return probe(session.global(), *options); });
    command.add_option("files", options->files, "Pictures, sequences or video, as in vireo render --help")
        ->required()
        ->type_name("IN...");
    addInputOptions(command, *options);
    command.option_defaults()->group("Options");
    command.add_flag("--json", options->json, "As JSON");
    command.footer(
        "Examples:\n  vireo probe clip.mov\n  vireo probe *.mov --json\n  vireo probe frame%04d.png");
}

}  // namespace vireo
