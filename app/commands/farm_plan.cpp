// SPDX-License-Identifier: MIT
#include "app/commands/farm_plan.h"

#include "app/base/files.h"
#include "engine/error.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

Json framesJson(const Segment& segment) { return {segment.first, segment.last}; }

std::string range(const Segment& segment) {
    return std::to_string(segment.first) + '-' + std::to_string(segment.last);
}

Json taskJson(const FarmTask& task) {
    return {{"name", task.name},
            {"command", task.command},
            {"inputs", task.inputs},
            {"outputs", task.outputs},
            {"dependencies", task.dependencies}};
}

std::string lines(const Json& json) { return json.dump(2) + '\n'; }

/// A step that runs one shell script.
Json openStep(const std::string& name, const std::string& command) {
    constexpr std::size_t mostBytes = 32 * 1024;
    const std::string script = "set -e\ncd \"$1\"\n" + command + '\n';
    if (script.size() > mostBytes)
        throw Error(Fault::Usage,
                    "an Open Job Description holds scripts of up to 32 KiB, and the chain's is longer");
    return {{"name", name},
            {"script",
             {{"actions",
               {{"onRun", {{"command", "/bin/sh"}, {"args", {"{{Task.File.Run}}", "{{Param.Folder}}"}}}}}},
              {"embeddedFiles", {{{"name", "Run"}, {"type", "TEXT"}, {"data", script}}}}}}};
}

/// A literal of Python.
std::string literal(const std::string& text) { return Json(text).dump(); }

/// File names of a rule, which may have no wildcards. Throws Error of wrong usage.
std::string pathLiterals(const std::vector<std::string>& paths) {
    std::string text;
    for (const std::string& path : paths) {
        if (path.find_first_of("{}") != std::string::npos)
            throw Error(Fault::Usage, "a Snakefile cannot name files with braces, as " + path + " has");
        text += (text.empty() ? "" : ",\n        ") + literal(path);
    }
    return text;
}

}  // namespace

std::string planJson(const FarmPlan& plan) {
    Json segments = Json::array();
    for (const FarmTask& task : plan.segments) {
        Json& segment = segments.emplace_back(taskJson(task));
        segment["frames"] = framesJson(task.frames);
    }
    return lines({{"vireo", 1},
                  {"input", plan.input},
                  {"output", plan.output},
                  {"folder", plan.folder},
                  {"segments", segments},
                  {"join", taskJson(plan.join)}});
}

std::string openJobDescription(const FarmPlan& plan) {
    constexpr std::size_t mostTasks = 1024;
    constexpr std::size_t longestName = 64;
    if (plan.segments.size() > mostTasks)
        throw Error(Fault::Usage, "an Open Job Description takes up to 1024 segments");
    for (const std::string& command : {plan.anySegment(""), plan.join.command})
        if (command.find("{{") != std::string::npos)
            throw Error(Fault::Usage,
                        "an Open Job Description cannot hold \"{{\", which a name or value here has");
    Json ranges = Json::array();
    for (const FarmTask& task : plan.segments) ranges.push_back(task.numbers);
    Json segments = openStep("Segments", plan.anySegment("{{Task.Param.Frames}}"));
    segments["parameterSpace"] = {
        {"taskParameterDefinitions", {{{"name", "Frames"}, {"type", "STRING"}, {"range", ranges}}}}};
    Json join = openStep("Join", plan.join.command);
    join["dependencies"] = {{{"dependsOn", "Segments"}}};
    const std::string name = "vireo " + utf8Of(pathOf(plan.output).filename());
    return lines({{"specificationVersion", "jobtemplate-2023-09"},
                  {"name", name.substr(0, longestName)},
                  {"parameterDefinitions",
                   {{{"name", "Folder"},
                     {"type", "PATH"},
                     {"objectType", "DIRECTORY"},
                     {"dataFlow", "INOUT"},
                     {"description", "The folder in which the plan was made, as the workers see it"},
                     {"default", utf8Of(std::filesystem::current_path())}}}},
                  {"steps", {segments, join}}});
}

std::string snakefile(const FarmPlan& plan) {
    std::string segments;
    for (const FarmTask& task : plan.segments)
        segments += "    " + literal(task.name) + ": " + literal(task.command) + ",\n";
    const std::string mark =
        pathLiterals({plan.folder + '/'}) + " + \"{segment}\" + " + literal(plan.markExtension);
    const std::string all = "expand(" + mark + ", segment=SEGMENTS)";
    const auto rule = [](const std::string& name, const std::string& input, const std::string& output,
                         const std::string& line) {
        return "\nrule " + name + ":\n    input:\n        " + input + "\n    output:\n        " + output +
               "\n    params:\n        line=lambda wildcards: " + line +
               "\n    shell:\n        \"{params.line}\"\n";
    };
    // Pictures need no joining. Snakemake would take those of the segments away before.
    const std::string output = pathLiterals({plan.output});
    return "SEGMENTS = {\n" + segments + "}\n\nrule all:\n    input:\n        " +
           (plan.joins ? output : all) + '\n' +
           rule("segment", pathLiterals(plan.join.inputs), plan.joins ? "temp(" + mark + ')' : mark,
                "SEGMENTS[wildcards.segment]") +
           (plan.joins ? rule("join", all, output, literal(plan.join.command)) : "");
}

std::string statusText(const FarmPlan& plan, const std::vector<bool>& done, bool joined) {
    std::string text;
    for (std::size_t i = 0; i < done.size(); ++i)
        text += "frames " + range(plan.segments[i].frames) + (done[i] ? "  done\n" : "  missing\n");
    const auto count = std::count(done.begin(), done.end(), true);
    return text + std::to_string(count) + " of " + std::to_string(done.size()) + " segments are there" +
           (joined ? " and joined" : "") + '\n';
}

std::string statusJson(const FarmPlan& plan, const std::vector<bool>& done, bool joined) {
    Json segments = Json::array();
    for (std::size_t i = 0; i < done.size(); ++i) {
        const FarmTask& task = plan.segments[i];
        segments.push_back(
            {{"name", task.name}, {"frames", framesJson(task.frames)}, {"done", bool{done[i]}}});
    }
    return lines({{"output", plan.output}, {"joined", joined}, {"segments", segments}});
}

}  // namespace vireo
