// SPDX-License-Identifier: MIT
// What vireo farm takes.
#include "app/commands/commands.h"
#include "app/commands/farm_segments.h"
#include "app/commands/render_options.h"

#include <memory>

namespace vireo {
namespace {

constexpr char planExamples[] =
    R"help(Takes everything that vireo render takes. All lines may run again at any time: only
what is missing is done.

Examples:
  vireo farm plan in.mov out.mov -f Levels --segments 8 | sh
  vireo farm plan in.mov out.mov -f Levels --segments 64 --part segments | parallel
  vireo farm plan in.mov out.mov -f Levels --segments 64 --part join | sh
  vireo farm plan in.mov out.mov -f Levels --segments 64 --format openjd > job.json
  vireo farm plan in.mov out.mov -f Levels --segments 64 --format snakemake > Snakefile)help";

constexpr char statusExamples[] = R"help(Example:
  vireo farm status in.mov out.mov -f Levels --segments 8)help";

constexpr char joinExamples[] = R"help(Example:
  vireo farm join in.mov out.mov -f Levels --segments 8)help";

constexpr char familyExamples[] = R"help(Example:
  vireo farm plan in.mov out.mov -f Levels --segments 8 | sh)help";

void addKeep(CLI::App& command, FarmOptions& options) {
    command.add_flag("--keep", options.keep, "Keep the segments when they are joined");
}

using Work = void (*)(const Catalogue&, const GlobalOptions&, const FarmOptions&);

/// A command of the farm; its options are kept by what runs it.
CLI::App& addWork(CommandSet& commands, CLI::App& farm, const std::string& name,
                  const std::string& description, Work work, const std::shared_ptr<FarmOptions>& options) {
    const auto self = std::make_shared<const CLI::App*>();
    CLI::App& command = commands.add(farm, name, description,
                                     [options, self, work, &program = commands.program()](Session& session) {
                                         options->given = givenOptions(**self, options->render.settings);
                                         for (GivenOption& option : givenOptions(program, {}))
                                             options->given.push_back(std::move(option));
                                         work(session.catalogue(), session.global(), *options);
                                         return 0;
                                     });
    *self = &command;
    addRenderOptions(command, options->render);
    command.remove_option(command.get_option("--format"));  // Nothing goes to standard output.
    command.option_defaults()->group("Segments");
    command.add_option("--segments", options->segments, "How many segments")
        ->required()
        ->check(wholeNumbers(1, largestNumber))
        ->type_name("N");
    return command;
}

}  // namespace

void addFarmCommand(CommandSet& commands) {
    CLI::App& farm = commands.addFamily("farm", "Render one clip on many machines");
    farm.footer(familyExamples);
    const auto planned = std::make_shared<FarmOptions>();
    CLI::App& plan =
        addWork(commands, farm, "plan", "Print the shell lines that render a clip in segments and join them",
                planFarm, planned);
    plan.add_option("--part", planned->part, "Only the lines of the segments, or of joining")
        ->check(oneOf({"segments", "join"}))
        ->type_name("segments|join");
    addKeep(plan, *planned);
    planned->format = "sh";
    CLI::Option* format = plan.add_option("--format", planned->format,
                                          "What to print: shell lines (sh), JSON, an Open Job Description "
                                          "template or a Snakefile")
                              ->check(oneOf({"sh", "json", "openjd", "snakemake"}))
                              ->type_name("sh|json|openjd|snakemake");
    plan.add_flag_callback(
            "--json", [planned] { planned->format = "json"; }, "The same as --format json")
        ->excludes(format);
    plan.footer(planExamples);

    const auto shown = std::make_shared<FarmOptions>();
    CLI::App& status =
        addWork(commands, farm, "status", "Tell which segments of a plan of the same options are there",
                showFarm, shown);
    status.add_flag("--json", shown->json, "As JSON");
    status.footer(statusExamples);

    const auto joined = std::make_shared<FarmOptions>();
    CLI::App& join =
        addWork(commands, farm, "join", "Join the segments of a plan of the same options", joinFarm, joined);
    addKeep(join, *joined);
    join.footer(joinExamples);
}

}  // namespace vireo
