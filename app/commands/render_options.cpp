// SPDX-License-Identifier: MIT
#include "app/commands/render_options.h"

#include "engine/catalogue/names.h"
#include "engine/error.h"
#include "engine/settings/clip_time.h"
#include "engine/text.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <numeric>

namespace vireo {
namespace {

constexpr std::int64_t mostJobs = 1024;

void addSettingsOption(CLI::App& command, const std::string& names, const std::string& value,
                       std::vector<SettingsOption>& settings, SettingsOption::Kind kind,
                       const std::string& description) {
    command
        .add_option_function<std::string>(
            names,
            [&settings, kind](const std::string& text) {
                settings.push_back({kind, text});
            },
            description)
        ->trigger_on_parse()
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast)
        ->type_name(value);
}

FrameRange parseFrames(const std::string& text) {
    const std::size_t dash = text.find('-');
    const auto first = parseWholeNumber(trimmed(std::string_view(text).substr(0, dash)));
    const auto last = dash == std::string::npos
                          ? std::nullopt
                          : parseWholeNumber(trimmed(std::string_view(text).substr(dash + 1)));
    if (!first || !last)
        throw Error(Fault::Usage, "--frames takes A-B, two frame numbers from 0, not " + inQuotes(text));
    if (*first > *last)
        throw Error(Fault::Usage, "--frames takes a first and a last frame, and " + inQuotes(text) +
                                      " ends before it begins");
    return {*first, *last};
}

ClipTime parseTime(const char* option, const std::string& text) {
    const auto time = parseClipTime(text);
    if (!time)
        throw Error(Fault::Usage, std::string(option) +
                                      " takes a time like 5s, 2.5, 1:02:03.5 or 120f, not " + inQuotes(text));
    return *time;
}

/// The part of the clip that is rendered. Where the frames are known before the clip is, it is a range of
/// frames.
void takePart(const RenderOptions& options, RenderJob& job) {
    if (!options.frames.empty()) {
        if (!options.start.empty() || !options.duration.empty())
            throw Error(Fault::Usage, "--frames goes without --start and --duration");
        job.frames = parseFrames(options.frames);
        return;
    }
    std::optional<ClipTime> start, duration;
    if (!options.start.empty()) start = parseTime("--start", options.start);
    if (!options.duration.empty()) duration = parseTime("--duration", options.duration);
    if (!start && !duration) return;
    if (duration && (duration->frame ? *duration->frame == 0 : duration->seconds == 0))
        throw Error(Fault::Usage, "--duration 0 leaves nothing to render");
    if (start && start->frame) job.frames = FrameRange{*start->frame, std::nullopt};
    if (start && !start->frame) job.start = start->seconds;
    if (!duration) return;
    if (!duration->frame) {
        job.duration = duration->seconds;
    } else if (job.start) {
        job.durationFrames = duration->frame;
    } else {
        const std::int64_t first = job.frames ? job.frames->first : 0;
        job.frames = FrameRange{first, lastOf(first, *duration->frame)};
    }
}

void takeProgress(const RenderOptions& options, RenderJob& job) {
    job.progress.json = options.progress == "json" || options.progressFile;
    if (!options.progressFile) return;
    if (options.progress == "text") throw Error(Fault::Usage, "--progress-fd is for --progress json");
    if (!isWritable(*options.progressFile)) {
        throw Error(Fault::Usage, "--progress-fd " + std::to_string(*options.progressFile) +
                                      " is no descriptor that can be written to");
    }
    job.progress.file = *options.progressFile;
}

/// So many whole numbers between colons.
std::optional<std::vector<int>> parseNumbers(const std::string& text, std::size_t count) {
    std::vector<int> numbers;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find(':', begin), text.size());
        int number = 0;
        const auto [rest, failure] = std::from_chars(text.data() + begin, text.data() + end, number);
        if (failure != std::errc() || rest != text.data() + end) return std::nullopt;
        numbers.push_back(number);
        begin = end + 1;
    }
    return numbers.size() == count ? std::optional(numbers) : std::nullopt;
}

Preparation::Crop parseCrop(const std::string& text) {
    const auto n = parseNumbers(text, 4);
    if (!n || (*n)[0] < 1 || (*n)[1] < 1 || (*n)[2] < 0 || (*n)[3] < 0) {
        throw Error(
            Fault::Usage,
            "--crop takes W:H:X:Y, a width and a height from 1 and a corner from 0, not " + inQuotes(text));
    }
    return {(*n)[0], (*n)[1], (*n)[2], (*n)[3]};
}

Preparation::Scale parseScale(const std::string& text) {
    constexpr int coarsest = -16;
    const auto n = parseNumbers(text, 2);
    if (!n || std::min((*n)[0], (*n)[1]) < coarsest || (*n)[0] == 0 || (*n)[1] == 0 ||
        std::max((*n)[0], (*n)[1]) < 1) {
        throw Error(
            Fault::Usage,
            "--scale takes W:H, a width and a height from 1, one of which may be -1, or -2 for an even "
            "one, not " +
                inQuotes(text));
    }
    return {(*n)[0], (*n)[1]};
}

std::optional<std::uint32_t> parseFormat(const std::string& name) {
    if (name.empty()) return std::nullopt;
    if (name.size() != 4)
        throw Error(Fault::Usage,
                    "--filter-format takes a code of four characters such as vuya, not " + inQuotes(name));
    const char characters[5] = {name[0], name[1], name[2], name[3], '\0'};
    return PixKit::formatCode(characters);
}

}  // namespace

std::pair<std::string, std::string> parseEncoderOption(const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0)
        throw Error(Fault::Usage, "--encoder-option takes NAME=VALUE, not " + inQuotes(text));
    return {text.substr(0, equals), text.substr(equals + 1)};
}

void addChainOptions(CLI::App& command, RenderOptions& options) {
    using Kind = SettingsOption::Kind;
    command.option_defaults()->group("Filters");
    auto& settings = options.settings;
    addSettingsOption(command, "-f,--filter", "FILTER:...", settings, Kind::Filter,
                      "A filter and its parameters, NAME:parameter=value,...; several make a chain");
    addSettingsOption(command, "--preset", "PRESET", settings, Kind::Preset,
                      "A ready-made look, in its place among the -f; vireo presets lists them");
    addSettingsOption(command, "--settings", "FILE", settings, Kind::SettingsFile,
                      "A settings file: the chain, or the settings of the one -f");
    addSettingsOption(command, "--lvl", "FILE", settings, Kind::LevelsFile,
                      "A Levels file, for the -f Levels before it or alone");
    addSettingsOption(command, "--settings-bytes", "FILE", settings, Kind::SettingsBytes,
                      "The settings handle of the -f before it: a file, or hex:...");
    command.add_option("--save-settings", options.saveSettings, "Write the chain as a settings file")
        ->type_name("FILE");
    addSettingsOption(command, "--save-settings-bytes", "FILE", settings, Kind::SaveSettingsBytes,
                      "Write the settings handle of the -f before it");
    command
        .add_option("--filter-format", options.filterFormat,
                    "Pixel format for filters that offer it; Bgra (16 bits) and BGra (float) for one alone")
        ->type_name("bgra|vuya|Bgra|BGra");
}

void addInputOptions(CLI::App& command, RenderOptions& options) {
    command.option_defaults()->group("Input");
    RenderJob& job = options.job;
    command.add_option("--frames", options.frames, "Only these frames, from 0, both included")
        ->type_name("A-B");
    command.add_option("--start", options.start, "Begin at this time: 5s, 2.5, 1:02:03.5 or 120f")
        ->type_name("TIME");
    command.add_option("--duration", options.duration, "Render for this long")->type_name("TIME");
    command.add_option("--clip-length", job.clipLength, "Frames of the input, where they cannot be counted")
        ->check(wholeNumbers(1, largestNumber))
        ->type_name("N");
    CLI::Option* progressive =
        command.add_flag("--progressive", options.progressive, "Frames are progressive, whatever they say");
    command.add_option("--interlaced", options.interlaced, "Frames are interlaced, that field first")
        ->check(oneOf({"tff", "bff"}))
        ->excludes(progressive)
        ->type_name("tff|bff");
    command.add_flag("--premultiplied", job.premultiplied, "Colours of the source are multiplied by alpha");
    command.add_option("--dither", options.dither, "How deeper channels are brought to 8 bits, else ordered")
        ->check(oneOf({"ordered", "none"}))
        ->type_name("ordered|none");
    command.add_flag("--deinterlace", job.preparation.deinterlace,
                     "First make whole frames of the fields, one of two");
    command.add_option("--crop", options.crop, "Cut this part out of the picture, then begin")
        ->type_name("W:H:X:Y");
    command.add_option("--scale", options.scale, "Scale to this size, then begin; -1 or -2 keep the aspect")
        ->type_name("W:H");
    command
        .add_option("--fps", options.fps, "Drop or repeat frames to this rate, then begin: 25, 30000/1001")
        ->type_name("N");
    command.add_flag("--strict", job.strict, "A damaged input is a failure");
    addPolicyOptions(command, job.policy);
}

void addPolicyOptions(CLI::App& command, InputPolicy& policy) {
    command.add_flag("--allow-references", policy.references,
                     "Inputs such as playlists may read other files below their folder");
    command
        .add_option(
            "--max-pixels", policy.maxPixels,
            "Refuse larger pictures: width times height, else " + std::to_string(InputPolicy::usualPixels))
        ->check(wholeNumbers(1, InputPolicy::mostPixels))
        ->type_name("N");
}

void addOutputOptions(CLI::App& command, RenderOptions& options) {
    command.option_defaults()->group("Output");
    RenderJob& job = options.job;
    command.add_flag("--overwrite", job.overwrite, "Replace what exists");
    command.add_flag("--alpha", job.alpha, "Keep alpha");
    command.add_flag("--no-audio", job.noAudio, "Leave the sound out");
    command.add_option("--start-number", job.startNumber, "Number of a sequence's first file")
        ->check(wholeNumbers(0, largestNumber))
        ->type_name("N");
    command.add_option("--encoder", job.encoder, "The encoder, by its library's name: libx265")
        ->type_name("NAME");
    command
        .add_option("--encoder-option", options.encoderOptions,
                    "The encoder's own option: crf=20; may be repeated")
        ->allow_extra_args(false)
        ->type_name("NAME=VALUE");
    command
        .add_option("--quality", job.quality,
                    "One scale for the usual encoders, from 0 (smallest) to 100 (best), instead of their own")
        ->check(wholeNumbers(0, 100))
        ->type_name("N");
    command.add_flag("--two-pass", job.twoPass,
                     "Spend the bit rate of --encoder-option b=... where it is needed, rendering twice");
    command.add_option("--pixel-format", job.pixelFormat, "The output's pixel format: yuv422p10le")
        ->type_name("NAME");
    command.add_option("--format", job.format, "What standard output gets: matroska (default), y4m, png...")
        ->type_name("FORMAT");
}

void addProgressOptions(CLI::App& command, RenderOptions& options) {
    command.option_defaults()->group("Options");
    command
        .add_option("--progress", options.progress,
                    "For programs: json is an object a line on standard error; text is the default")
        ->check(oneOf({"text", "json"}))
        ->type_name("text|json");
    command.add_option("--progress-fd", options.progressFile, "Such objects go to this file descriptor")
        ->check(wholeNumbers(0, largestNumber))
        ->type_name("N");
}

void addWorkOptions(CLI::App& command, RenderOptions& options) {
    command.option_defaults()->group("Options");
    command
        .add_option("--jobs", options.job.jobs,
                    "Frames or pictures rendered side by side, else one for each core")
        ->check(wholeNumbers(1, mostJobs))
        ->type_name("N");
}

void addJobOptions(CLI::App& command, RenderOptions& options) {
    command
        .add_option("files", options.files,
                    "Pictures, sequences such as frame%04d.png, or video; - is standard input or output")
        ->type_name("IN... [OUT]");
    addChainOptions(command, options);
    addInputOptions(command, options);
    addOutputOptions(command, options);
    command.add_option("--to", options.folder, "A folder for the outputs of many inputs")
        ->type_name("FOLDER");
}

void addRenderOptions(CLI::App& command, RenderOptions& options) {
    addJobOptions(command, options);
    addProgressOptions(command, options);
    addWorkOptions(command, options);
}

Ratio parseFrameRate(const std::string& option, const std::string& text) {
    constexpr std::int64_t fastest = 1000, finest = 1'000'000;
    const std::size_t slash = text.find('/');
    std::int64_t numerator = 0, denominator = 1;
    if (slash != std::string::npos) {
        numerator = parseWholeNumber(text.substr(0, slash)).value_or(0);
        denominator = parseWholeNumber(text.substr(slash + 1)).value_or(0);
    } else {
        double number = 0;
        const auto [rest, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
        if (failure == std::errc() && rest == text.data() + text.size() && number <= fastest) {
            numerator = std::llround(number * finest);
            denominator = finest;
        }
    }
    if (numerator < 1 || denominator < 1 || denominator > finest || numerator / denominator > fastest)
        throw Error(Fault::Usage,
                    option +
                        " takes a rate up to 1000 frames a second, such as 25, 29.97 or 30000/1001, not " +
                        inQuotes(text));
    const std::int64_t divisor = std::gcd(numerator, denominator);
    return {static_cast<int>(numerator / divisor), static_cast<int>(denominator / divisor)};
}

RenderJob commonJob(const GlobalOptions& global, const RenderOptions& options) {
    RenderJob job = options.job;
    job.quiet = global.quiet;
    takePart(options, job);
    for (const std::string& text : options.encoderOptions)
        job.encoderOptions.push_back(parseEncoderOption(text));
    job.dithers = options.dither != "none";
    takeProgress(options, job);
    if (!options.crop.empty()) job.preparation.crop = parseCrop(options.crop);
    if (!options.scale.empty()) job.preparation.scale = parseScale(options.scale);
    if (!options.fps.empty()) job.preparation.rate = parseFrameRate("--fps", options.fps);
    if (options.progressive) job.interlacing = Interlacing::Progressive;
    if (options.interlaced == "tff") job.interlacing = Interlacing::TopFieldFirst;
    if (options.interlaced == "bff") job.interlacing = Interlacing::BottomFieldFirst;
    return job;
}

std::unique_ptr<ChainProcessor> chainOf(const ChainOptions& chain, const RenderOptions& options, int frames) {
    return std::make_unique<ChainProcessor>(chain.filters,
                                            frames > 0 ? frames : framesAtOnce(options.job.jobs),
                                            parseFormat(options.filterFormat));
}

std::optional<Layout> layoutNamed(std::string_view name) {
    if (name == "after") return Layout::After;
    if (name == "beside") return Layout::Beside;
    if (name == "below") return Layout::Below;
    if (name == "split") return Layout::Split;
    return std::nullopt;
}

void tellDone(const RenderJob& job, const RenderSummary& summary, Messages& messages) {
    std::string names;
    for (const std::string& name : job.outputs()) {
        if (name != "-") names += (names.empty() ? "" : ", ") + name;
    }
    if (job.dryRun || names.empty()) return;
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%.2f", summary.seconds);
    messages.tell(names + ": " + std::to_string(summary.frames) +
                  (summary.frames == 1 ? " frame" : " frames") + " in " + seconds + " s");
}

RenderSummary runJob(const RenderJob& job, FrameProcessor& processor, Messages& messages) {
    const RenderSummary summary = renderMedia(job, processor, messages);
    tellDone(job, summary, messages);
    return summary;
}

void runJob(const RenderJob& job, FrameProcessor& processor) {
    Messages messages(job.quiet, job.progress, job.output);
    runJob(job, processor, messages);
}

}  // namespace vireo
