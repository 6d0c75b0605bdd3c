// SPDX-License-Identifier: MIT
#include "app/commands/render_report.h"

#include "app/base/terminal.h"
#include "app/commands/filter_json.h"
#include "engine/error.h"
#include "engine/settings/settings_file.h"

#include <cmath>
#include <iostream>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

/// Null where there is nothing.
Json orNull(const std::string& text) { return text.empty() ? Json() : Json(text); }
Json orNull(std::int64_t number) { return number > 0 ? Json(number) : Json(); }

const char* nameOf(TrackFate fate) {
    switch (fate) {
        case TrackFate::Rendered: return "rendered";
        case TrackFate::Copied: return "copied";
        case TrackFate::Converted: return "converted";
        case TrackFate::LeftOut: break;
    }
    return "left out";
}

const char* nameOf(Interlacing interlacing) {
    switch (interlacing) {
        case Interlacing::TopFieldFirst: return "top first";
        case Interlacing::BottomFieldFirst: return "bottom first";
        case Interlacing::Progressive: break;
    }
    return "progressive";
}

Json colorsJson(const ColorDescription& colors) {
    return {{"matrix", orNull(colors.matrix)},
            {"range", orNull(colors.range)},
            {"primaries", orNull(colors.primaries)},
            {"transfer", orNull(colors.transfer)}};
}

Json codingJson(const ColorDescription& colors) {
    return {{"matrix", orNull(colors.matrix)}, {"range", orNull(colors.range)}};
}

Json trackJson(const TrackDescription& track) {
    Json json{{"index", track.index},
              {"kind", track.kind},
              {"codec", track.codec},
              {"language", orNull(track.language)}};
    if (track.channels > 0) {
        json["channels"] = track.channels;
        json["sampleRate"] = track.sampleRate;
    }
    if (track.fate) json["fate"] = nameOf(*track.fate);
    return json;
}

Json outputJson(const OutputDescription& output) {
    Json options = Json::object();
    for (const auto& [name, value] : output.encoderOptions) options[name] = value;
    Json fates = Json::array();
    for (const TrackFate fate : output.fates) fates.push_back(nameOf(fate));
    return {{"name", output.name},
            {"firstFile", orNull(output.firstFile)},
            {"lastFile", orNull(output.lastFile)},
            {"container", orNull(output.format)},
            {"encoder", orNull(output.encoder)},
            {"encoderOptions", std::move(options)},
            {"pixelFormat", orNull(output.pixelFormat)},
            {"width", output.width},
            {"height", output.height},
            {"bits", output.depth},
            {"alpha", output.alphaIfNeeded ? Json("if needed") : Json(output.alpha)},
            {"tags", colorsJson(output.tags)},
            {"colours", codingJson(output.colors)},
            {"fates", std::move(fates)}};
}

Json outcomeJson(const RenderOutcome& outcome, bool isDryRun) {
    const RenderSummary& summary = outcome.summary;
    const bool isGood = outcome.status == 0 && !outcome.isSkipped;
    Json outputs = Json::array();
    if (isGood) {
        for (const OutputDescription& output : summary.media.outputs) outputs.push_back(outputJson(output));
    } else {
        for (const std::string& name : outcome.outputs) outputs.push_back({{"name", name}});
    }
    Json json{{"status", outcome.status},
              {"input", isGood ? inputJson(summary.media.input) : Json{{"name", outcome.input}}},
              {"output", outputs.at(0)},
              {"outputs", outputs},
              {"skipped", outcome.isSkipped}};
    if (outcome.status != 0) json["error"] = outcome.error;
    if (isGood) json["renderedBits"] = summary.media.renderedDepth;
    if (isGood && !isDryRun) {
        json["frames"] = summary.frames;
        json["seconds"] = std::round(summary.seconds * 1000) / 1000;
        json["bytes"] = summary.bytes;
        json["lost"] = summary.lost;
        json["impaired"] = summary.impaired;
    }
    json["warnings"] = messagesJson(outcome.messages);
    return json;
}

/// As in a settings file, with the values that nobody gave.
Json filterJson(const FilterSettings& given) {
    FilterSettings settings = given;
    Json json;
    try {
        if (settings.hasBytes()) settings.assignFromBytes();
        const auto count = static_cast<ValueIndex>(settings.filter().properties.parameters.size());
        for (ValueIndex i = 0; i < count; ++i) {
            if (!settings.isSet(i)) settings.set(i, settings.value(i));
        }
        json = Json::parse(settingsText({settings})).at("filters").at(0);
    } catch (const Error&) {
        // Bytes of a handle may hold what no text says.
        json = {{"filter", given.filter().properties.name}};
    }
    json["largest"] = limitsJson(traitsOf(given.filter()).limits);
    return json;
}

Json countsJson(const RenderCounts& counts, std::size_t planned) {
    return {
        {"planned", planned}, {"done", counts.done}, {"skipped", counts.skipped}, {"failed", counts.failed}};
}

Json reportJson(const RenderReport& report) {
    Json json = Json::object();
    if (report.job > 0) json["job"] = report.job;
    json["status"] = report.status;
    json["dryRun"] = report.isDryRun;
    if (!report.error.empty()) json["error"] = report.error;
    Json& chain = json["chain"] = Json::array();
    for (const FilterSettings& filter : report.chain) chain.push_back(filterJson(filter));
    Json& renders = json["renders"] = Json::array();
    for (const RenderOutcome& outcome : report.outcomes)
        renders.push_back(outcomeJson(outcome, report.isDryRun));
    json["summary"] = countsJson(countsOf(report.outcomes), report.planned);
    json["summary"]["passedOver"] = report.passedOver;
    return json;
}

Json reportJson(const BatchReport& report) {
    Json json{{"status", report.status}, {"dryRun", report.isDryRun}};
    if (!report.error.empty()) json["error"] = report.error;
    RenderCounts all;
    std::size_t planned = 0;
    Json& jobs = json["jobs"] = Json::array();
    for (const RenderReport& job : report.jobs) {
        jobs.push_back(reportJson(job));
        const RenderCounts counts = countsOf(job.outcomes);
        all = {all.done + counts.done, all.skipped + counts.skipped, all.failed + counts.failed};
        planned += job.planned;
    }
    json["summary"] = countsJson(all, planned);
    return json;
}

void printJson(const Json& json) {
    std::cout << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

void printHeading(const std::string& text) {
    std::cout << Terminal::output().styled(Style::Heading, text) << '\n';
}

void printLine(const std::string& name, const std::string& text) {
    constexpr std::size_t column = 14;
    if (!text.empty())
        std::cout << "  " << name << std::string(column - std::min(name.size(), column - 1), ' ') << text
                  << '\n';
}

/// What is there, with commas between.
std::string joined(std::initializer_list<std::string> texts) {
    std::string all;
    for (const std::string& text : texts) {
        if (!text.empty()) all += (all.empty() ? "" : ", ") + text;
    }
    return all;
}

std::string bits(int depth) { return depth == 32 ? "float" : std::to_string(depth) + " bits"; }

std::string sizeText(int width, int height) { return std::to_string(width) + " x " + std::to_string(height); }

std::string colorsText(const ColorDescription& colors) {
    const auto named = [](const char* name, const std::string& value) {
        return value.empty() ? "" : std::string(name) + ' ' + value;
    };
    return joined({named("matrix", colors.matrix), named("range", colors.range),
                   named("primaries", colors.primaries), named("transfer", colors.transfer)});
}

std::string colorsText(const ColorDescription& colors, const ColorDescription& tags) {
    const std::string tagged = colorsText(tags);
    return joined({colors.matrix.empty() ? "RGB" : colors.matrix,
                   colors.range.empty() ? "" : colors.range + " range"}) +
           (tagged.empty() ? "; untagged" : "; tagged with " + tagged);
}

std::string channelsText(const TrackDescription& track) {
    if (track.channels == 0) return {};
    return std::to_string(track.channels) + (track.channels == 1 ? " channel" : " channels");
}

std::string partText(const InputDescription& input) {
    if (input.framesExpected == 0) return "from frame " + std::to_string(input.firstFrame) + " on";
    return "frames " + std::to_string(input.firstFrame) + " to " +
           std::to_string(input.firstFrame + input.framesExpected - 1);
}

void printChain(const std::vector<FilterSettings>& chain) {
    if (chain.empty()) return;
    printHeading("Chain");
    for (const FilterSettings& filter : chain) {
        const Json json = filterJson(filter);
        std::string values;
        const auto add = [&](const std::string& name, const Json& value) {
            values += (values.empty() ? "" : ", ") + name + ' ' +
                      (value.is_string()    ? value.get<std::string>()
                       : value.is_boolean() ? value.get<bool>() ? "on" : "off"
                                            : value.dump());
        };
        if (json.contains("parameters")) {
            for (const auto& [name, value] : json["parameters"].items()) add(name, value);
        }
        for (const char* word : {"from", "to", "mix"}) {
            if (json.contains(word)) add(word, json[word]);
        }
        const std::string limits = limitsText(traitsOf(filter.filter()).limits);
        std::cout << "  " << Terminal::output().styled(Style::Name, filter.filter().properties.name)
                  << (values.empty() ? "" : ": " + values)
                  << (limits.empty() ? "" : "; frames of up to " + limits) << '\n';
    }
}

void printOutput(const OutputDescription& output, int renderedDepth) {
    printHeading(output.name == "-" ? "Standard output" : output.name);
    printLine("Files", output.firstFile.empty()
                           ? ""
                           : output.firstFile + " to " + (output.lastFile.empty() ? "..." : output.lastFile));
    printLine("Container", output.format);
    std::string options;
    for (const auto& [name, value] : output.encoderOptions)
        options.append(" ").append(name).append("=").append(value);
    printLine("Encoder", output.encoder + options);
    printLine("Pixels",
              joined({output.pixelFormat, bits(output.depth), "rendered with " + bits(renderedDepth)}));
    printLine("Size", sizeText(output.width, output.height));
    if (!output.encoder.empty()) printLine("Colours", colorsText(output.colors, output.tags));
    printLine("Alpha", output.alphaIfNeeded ? "where a pixel needs it" : output.alpha ? "yes" : "no");
}

/// Of one output, the input's tracks tell what becomes of them.
void printMedia(MediaDescription media) {
    const bool isOne = media.outputs.size() == 1;
    if (!isOne) {
        for (TrackDescription& track : media.input.tracks) track.fate.reset();
    }
    printInput(media.input);
    for (const OutputDescription& output : media.outputs) {
        printOutput(output, media.renderedDepth);
        for (std::size_t i = 0; !isOne && i < output.fates.size(); ++i)
            printLine("Track " + std::to_string(media.input.tracks[i].index), nameOf(output.fates[i]));
    }
}

}  // namespace

RenderCounts countsOf(const std::vector<RenderOutcome>& outcomes) {
    RenderCounts counts;
    for (const RenderOutcome& outcome : outcomes) {
        const bool isInterrupted = outcome.status > 2;
        if (!isInterrupted)
            ++(outcome.status != 0 ? counts.failed : outcome.isSkipped ? counts.skipped : counts.done);
    }
    return counts;
}

Json inputJson(const InputDescription& input) {
    Json tracks = Json::array();
    for (const TrackDescription& track : input.tracks) tracks.push_back(trackJson(track));
    return {{"name", input.name},
            {"container", orNull(input.format)},
            {"codec", orNull(input.codec)},
            {"pixelFormat", orNull(input.pixelFormat)},
            {"width", input.width},
            {"height", input.height},
            {"pixelAspect", orNull(input.pixelAspect)},
            {"turned", input.isTurned},
            {"bits", input.depth},
            {"alpha", input.alpha},
            {"premultiplied", input.premultiplied},
            {"fields", nameOf(input.interlacing)},
            {"frameRate", orNull(input.frameRate)},
            {"framesPerSecond", input.framesPerSecond},
            {"frames", orNull(input.frames)},
            {"firstFrame", input.firstFrame},
            {"framesExpected", orNull(input.framesExpected)},
            {"tags", colorsJson(input.tags)},
            {"colours", codingJson(input.colors)},
            {"tracks", std::move(tracks)},
            {"chapters", input.chapters}};
}

Json messagesJson(const std::vector<Message>& messages) {
    Json json = Json::array();
    for (const Message& message : messages)
        json.push_back({{"code", codeText(message.code)}, {"sentence", message.sentence}});
    return json;
}

void printInput(const InputDescription& input) {
    printHeading(input.name == "-" ? "Standard input" : input.name);
    printLine("Container", input.format);
    printLine("Pixels", joined({input.codec, input.pixelFormat, bits(input.depth)}));
    printLine("Size", joined({sizeText(input.width, input.height),
                              input.pixelAspect.empty() || input.pixelAspect == "1:1"
                                  ? ""
                                  : "pixels of " + input.pixelAspect,
                              input.isTurned ? "turned upright" : ""}));
    printLine("Frames", (input.frames > 0 ? std::to_string(input.frames) : "an unknown number") + " at " +
                            input.frameRate + " a second");
    printLine("Part", partText(input));
    printLine("Fields", nameOf(input.interlacing));
    printLine("Colours", colorsText(input.colors, input.tags));
    printLine("Alpha", !input.alpha ? "no" : input.premultiplied ? "premultiplied" : "straight");
    for (const TrackDescription& track : input.tracks) {
        printLine("Track " + std::to_string(track.index),
                  joined({track.kind, track.codec, track.language, channelsText(track),
                          track.channels > 0 ? std::to_string(track.sampleRate) + " Hz" : ""}) +
                      (track.fate ? std::string(": ") + nameOf(*track.fate) : ""));
    }
    if (input.chapters > 0) printLine("Chapters", std::to_string(input.chapters));
}

void printMessages(const std::vector<Message>& messages) {
    for (const Message& message : messages)
        std::cout << "  " << Terminal::output().styled(Style::Warning, "note:") << ' ' << message.sentence
                  << ".\n";
}

void printReport(const RenderReport& report, bool asJson) {
    if (asJson) {
        printJson(reportJson(report));
        return;
    }
    if (!report.isDryRun || !report.error.empty()) return;
    if (report.job > 0) printHeading("Job " + std::to_string(report.job));
    printChain(report.chain);
    for (const RenderOutcome& outcome : report.outcomes) {
        if (outcome.status != 0) continue;
        std::cout << '\n';
        if (outcome.isSkipped) {
            printHeading(outcome.outputs.front());
            printLine("Skipped", "it exists");
            continue;
        }
        printMedia(outcome.summary.media);
        printMessages(outcome.messages);
    }
}

void printReport(const BatchReport& report, bool asJson) {
    if (asJson) {
        printJson(reportJson(report));
        return;
    }
    for (const RenderReport& job : report.jobs) {
        if (report.isDryRun && job.job > 1) std::cout << '\n';
        printReport(job, false);
    }
}

}  // namespace vireo
