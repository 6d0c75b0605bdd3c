// SPDX-License-Identifier: MIT
// vireo farm: one clip rendered in segments by shell lines, which may run anywhere and again at any time.
#include "app/commands/farm_segments.h"

#include "app/base/files.h"
#include "app/base/interruption.h"
#include "app/commands/confinement.h"
#include "app/commands/farm_plan.h"
#include "app/commands/render_options.h"
#include "app/media/encoder_choice.h"
#include "app/media/picture_files.h"
#include "app/media/segment_join.h"
#include "app/media/sequence_pattern.h"
#include "engine/error.h"
#include "engine/settings/settings_file.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <iostream>

namespace vireo {
namespace {

namespace fs = std::filesystem;

/// One word of a shell line, whatever is in it.
std::string shellWord(const std::string& text) {
    constexpr std::string_view plain =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./:=,@%+-";
    if (text.find('\n') != std::string::npos)
        throw Error(Fault::Usage, "a line of the shell cannot hold a name with a line break");
    if (!text.empty() && text.find_first_not_of(plain) == std::string::npos) return text;
    std::string word = "'";
    for (char c : text) word += c == '\'' ? "'\\''" : std::string(1, c);
    return word + '\'';
}

/// A file's name that no command takes for an option.
std::string fileName(const std::string& name) { return name.starts_with('-') ? "./" + name : name; }

/// Tells plans apart: FNV-1a of 64 bits.
class Digest {
public:
    void add(std::string_view text) {
        for (char c : text) add(static_cast<std::uint8_t>(c));
        add(std::uint8_t{0});
    }
    void add(std::span<const std::uint8_t> bytes) {
        for (std::uint8_t byte : bytes) add(byte);
    }
    std::string text() const {
        std::array<char, 17> digits{};
        std::snprintf(digits.data(), digits.size(), "%016llx", static_cast<unsigned long long>(value_));
        return digits.data();
    }

private:
    void add(std::uint8_t byte) { value_ = (value_ ^ byte) * 1099511628211U; }

    std::uint64_t value_ = 14695981039346656037U;
};

bool isOneOf(const std::string& name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// What the lines of one farm share. It follows from the options and the input alone, so that lines and the
/// joining agree on it.
class Farm {
public:
    enum class Purpose { Look, Write };

    Farm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options, Purpose purpose)
        : options_(options),
          chainOptions_(readChain(catalogue, options.render)),
          job_(jobOf(global, options)) {
        chain_ = chainOf(chainOptions_, options.render);
        folder_ = job_.output + ".farm-" + digest();
        confine(global, purpose);
        part_ = partOf(job_, *chain_);
        cut();
    }

    bool writesPictures() const { return vireo::writesPictures(job_); }
    const RenderJob& job() const { return job_; }
    const FrameProcessor& chain() const { return *chain_; }
    const std::string& folder() const { return folder_; }
    const std::vector<Segment>& segments() const { return segments_; }

    /// Throws Error where the output exists, unless a plan that is under way has begun it.
    void refuseExistingOutput() const {
        std::error_code error;
        if (job_.overwrite || fs::exists(pathOf(folder_), error)) return;
        if (writesPictures()) {
            checkPictureOutput(job_, part_.firstNumber, part_.firstFrame, part_.frames);
        } else {
            refuseExisting(job_.output);
        }
    }

    FarmPlan plan() const {
        FarmPlan plan{job_.input, job_.output, folder_, markExtension(), !writesPictures(), {}, {}, {}};
        for (const Segment& segment : segments_) {
            plan.segments.push_back({"frames-" + paddedNumbers(segment),
                                     skip(segment) + renderLine(numbersOf(segment), segment.file),
                                     inputFiles(),
                                     {segment.file},
                                     {},
                                     segment,
                                     paddedNumbers(segment)});
        }
        plan.join = {"join", joinLine(), inputFiles(), outputFiles(), {}, {}, {}};
        for (const FarmTask& segment : plan.segments) plan.join.dependencies.push_back(segment.name);
        plan.anySegment = [this](const std::string& numbers) {
            return renderLine(numbers, folder_ + "/frames-" + numbers + markExtension());
        };
        return plan;
    }

    /// Renders the segment if it is missing.
    void render(const Segment& segment, Messages& messages, FrameRuns& lost) {
        std::error_code error;
        if (fs::exists(pathOf(segment.file), error)) return;
        RenderJob job = job_;
        job.frames = FrameRange{segment.first, segment.last};
        job.start = job.duration = std::nullopt;
        job.durationFrames = std::nullopt;
        job.noAudio = true;
        job.overwrite = true;
        if (!writesPictures()) job.output = segment.file;
        messages.beginPart(segment.first - part_.firstFrame, part_.frames);
        const RenderSummary summary = renderMedia(job, *chain_, messages);
        lost.insert(lost.end(), summary.lost.begin(), summary.lost.end());
        if (writesPictures()) writeFile(segment.file, {}, true);
    }

    /// Joins the segments where that is needed, and counts the frames.
    std::int64_t finish(Messages& messages) const {
        if (!writesPictures()) return joinSegments(job_, *chain_, segments_, messages);
        return static_cast<std::int64_t>(writtenFiles().size());
    }

    std::int64_t writtenBytes() const {
        std::int64_t bytes = 0;
        for (const fs::path& file : writtenFiles()) bytes += static_cast<std::int64_t>(fs::file_size(file));
        return bytes;
    }

    /// What one render of the whole would say of itself.
    MediaDescription description() {
        RenderJob job = job_;
        job.dryRun = job.overwrite = true;
        Messages silent(true);
        return renderMedia(job, *chain_, silent).media;
    }

private:
    void confine(const GlobalOptions& global, Purpose purpose) const {
        RenderJob job = job_;
        job.dryRun = purpose == Purpose::Look;
        Confinement confinement;
        confinement.add(options_.render);
        confinement.add(job);
        if (purpose == Purpose::Write) confinement.keep(pathOf(folder_));
        confinement.enter(global);
    }

    /// Does a segment if it is missing.
    std::string renderLine(const std::string& numbers, const std::string& file) const {
        const std::string folder = shellWord(folder_);
        const std::string mark = shellWord(file);
        std::string line = "test -e " + mark + " || { mkdir -p " + folder + " && vireo render";
        for (const GivenOption& option : options_.given) {
            if (!isOneOf(option.name, {"--frames", "--start", "--duration", "--no-audio", "--overwrite"}))
                line += words(option);
        }
        line += " --frames " + numbers + " --no-audio";
        if (!writesPictures()) return line + ' ' + shellWord(job_.input) + ' ' + mark + "; }";
        // A worker that ended while its pictures appeared has left some of them.
        return line + " --overwrite " + shellWord(job_.input) + ' ' + shellWord(job_.output) + " && : > " +
               mark + "; }";
    }

    std::string joinLine() const {
        const std::string done = shellWord(writesPictures() ? folder_ : job_.output);
        std::string line = writesPictures() ? "test ! -e " + done + " || "
                           : job_.overwrite ? ""
                                            : "test -e " + done + " || ";
        line += "vireo farm join";
        for (const GivenOption& option : options_.given) line += words(option);
        return line + " --segments " + std::to_string(options_.segments) + (options_.keep ? " --keep" : "") +
               ' ' + shellWord(job_.input) + ' ' + shellWord(job_.output);
    }

    static RenderJob jobOf(const GlobalOptions& global, const FarmOptions& options) {
        const RenderOptions& render = options.render;
        if (!render.folder.empty() || render.files.size() != 2)
            throw Error(Fault::Usage, "a farm takes one input and one output");
        if (!render.saveSettings.empty() ||
            std::any_of(render.settings.begin(), render.settings.end(), [](const SettingsOption& option) {
                return option.kind == SettingsOption::Kind::SaveSettingsBytes;
            }))
            throw Error(Fault::Usage, "a farm saves no settings; vireo render without files does");
        RenderJob job = commonJob(global, render);
        job.input = fileName(render.files[0]);
        job.output = fileName(render.files[1]);
        if (job.input == "./-" || job.output == "./-")
            throw Error(Fault::Usage, "a farm takes files and no standard input or output");
        std::error_code error;
        if (job.input == job.output || fs::equivalent(pathOf(job.input), pathOf(job.output), error))
            throw Error(Fault::Usage, "a farm cannot replace its own input, since its lines may run again");
        return job;
    }

    /// Of everything that the segments' frames depend on.
    std::string digest() const {
        Digest digest;
        for (const GivenOption& option : options_.given) {
            // Options of the farm itself have none.
            const std::string given = words(option);
            if (!given.empty() &&
                !isOneOf(option.name,
                         {"--overwrite", "--quiet", "--jobs", "--log", "--progress", "--progress-fd",
                          "--resume", "--json", "--to", "--name", "--no-sandbox", "--recursive",
                          "--skip-existing", "--save-settings", "--save-settings-bytes"}))
                digest.add(given);
        }
        digest.add(settingsText(chainOptions_.filters));
        for (const FilterSettings& filter : chainOptions_.filters) digest.add(filter.record({}));
        addFiles(digest);
        return digest.text();
    }

    /// The input's files, as far as a file that has changed shows it.
    void addFiles(Digest& digest) const {
        const auto add = [&](const fs::path& path) {
            std::error_code error;
            digest.add(utf8Of(path));
            digest.add(std::to_string(fs::file_size(path, error)));
            digest.add(std::to_string(fs::last_write_time(path, error).time_since_epoch().count()));
        };
        const auto pattern = SequencePattern::parse(job_.input);
        if (!pattern || fs::exists(pathOf(job_.input))) return add(pathOf(job_.input));
        for (std::int64_t number : pattern->existing()) add(pattern->folder() / pattern->name(number));
    }

    std::vector<fs::path> writtenFiles() const {
        const auto pattern = SequencePattern::parse(job_.output);
        if (!writesPictures() || !pattern) return {pathOf(job_.output)};
        const std::int64_t first = part_.firstNumber + part_.firstFrame;
        std::vector<fs::path> files;
        for (std::int64_t number : pattern->existing()) {
            if (number >= first && number < first + part_.frames)
                files.push_back(pattern->folder() / pattern->name(number));
        }
        return files;
    }

    void cut() {
        const std::int64_t count = part_.frames;
        const std::int64_t parts = std::min(options_.segments > 0 ? options_.segments : partsToGoOn(), count);
        digits_ = std::to_string(lastOf(part_.firstFrame, count)).size();
        for (std::int64_t i = 0; i < parts; ++i) {
            // Evenly, the first ones longer; count · segments could be too large a product.
            const auto begin = [&](std::int64_t part) {
                return part_.firstFrame + count / parts * part + std::min(part, count % parts);
            };
            Segment segment{begin(i), begin(i + 1) - 1, {}};
            segment.file = folder_ + "/frames-" + paddedNumbers(segment) + markExtension();
            segments_.push_back(std::move(segment));
        }
    }

    /// Of about ten seconds, and of a hundredth where the clip is long: each opens the input anew.
    std::int64_t partsToGoOn() const {
        constexpr double seconds = 10, most = 100;
        return std::llround(
            std::clamp(static_cast<double>(part_.frames) / part_.frameRate / seconds, 1.0, most));
    }

    std::string padded(std::int64_t number) const {
        const std::string text = std::to_string(number);
        return std::string(digits_ - text.size(), '0') + text;
    }

    std::string paddedNumbers(const Segment& segment) const {
        return padded(segment.first) + '-' + padded(segment.last);
    }

    static std::string numbersOf(const Segment& segment) {
        return std::to_string(segment.first) + '-' + std::to_string(segment.last);
    }

    /// Of the file that tells that a segment is there.
    std::string markExtension() const {
        return writesPictures() ? ".done" : utf8Of(pathOf(job_.output).extension());
    }

    std::vector<std::string> inputFiles() const {
        const auto pattern = SequencePattern::parse(job_.input);
        if (!pattern || fs::exists(pathOf(job_.input))) return {job_.input};
        std::vector<std::string> files;
        for (std::int64_t number : pattern->existing())
            files.push_back(fileName(utf8Of(pattern->folder() / pattern->name(number))));
        return files;
    }

    std::vector<std::string> outputFiles() const {
        const auto pattern = SequencePattern::parse(job_.output);
        if (!writesPictures() || !pattern) return {job_.output};
        std::vector<std::string> files;
        for (std::int64_t i = 0; i < part_.frames; ++i)
            files.push_back(pictureFile(*pattern, part_.firstFrame + i));
        return files;
    }

    std::string pictureFile(const SequencePattern& pattern, std::int64_t frame) const {
        return fileName(utf8Of(pattern.folder() / pattern.name(part_.firstNumber + frame)));
    }

    /// Nothing is left to do where the output is there, unless it was to be replaced.
    std::string skip(const Segment& segment) const {
        if (job_.overwrite) return {};
        if (!writesPictures()) return "test -e " + shellWord(job_.output) + " || ";
        // While there is a folder it alone tells what is done.
        const auto pattern = SequencePattern::parse(job_.output);
        const std::string last = pattern ? pictureFile(*pattern, segment.last) : job_.output;
        return "{ test ! -e " + shellWord(folder_) + " && test -e " + shellWord(last) + "; } || ";
    }

    static std::string words(const GivenOption& option) {
        if (isOneOf(option.name, {"--part", "--segments", "--keep", "--format", "--json"})) return {};
        if (!option.value) return ' ' + option.name;
        if (option.name == "--filter") return " -f " + shellWord(*option.value);
        return ' ' + option.name + '=' + shellWord(*option.value);
    }

    const FarmOptions& options_;
    const ChainOptions chainOptions_;
    const RenderJob job_;
    std::unique_ptr<ChainProcessor> chain_;
    std::string folder_;
    ClipPart part_;
    std::size_t digits_ = 1;  ///< Of a frame's number in a name.
    std::vector<Segment> segments_;
};

}  // namespace

void planFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options) {
    const Farm farm(catalogue, global, options, Farm::Purpose::Look);
    farm.refuseExistingOutput();
    const FarmPlan plan = farm.plan();
    if (options.format == "sh") {
        if (options.part != "join")
            for (const FarmTask& segment : plan.segments) std::cout << segment.command << '\n';
        if (options.part.empty()) std::cout << "# When all of them are done:\n";
        if (options.part != "segments") std::cout << plan.join.command << '\n';
        return;
    }
    if (!options.part.empty()) throw Error(Fault::Usage, "--part belongs to a plan of shell lines");
    std::cout << (options.format == "openjd"      ? openJobDescription(plan)
                  : options.format == "snakemake" ? snakefile(plan)
                                                  : planJson(plan));
}

void showFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options) {
    const Farm farm(catalogue, global, options, Farm::Purpose::Look);
    const FarmPlan plan = farm.plan();
    std::error_code error;
    const auto isThere = [&error](const std::string& file) { return fs::exists(pathOf(file), error); };
    const bool joined = !isThere(plan.folder) && isThere(plan.join.outputs.back());
    std::vector<bool> done;
    for (const FarmTask& segment : plan.segments) done.push_back(joined || isThere(segment.outputs.front()));
    std::cout << (options.json ? statusJson(plan, done, joined) : statusText(plan, done, joined));
}

void joinFarm(const Catalogue& catalogue, const GlobalOptions& global, const FarmOptions& options) {
    const Farm farm(catalogue, global, options, Farm::Purpose::Write);
    for (const Segment& segment : farm.segments()) {
        std::error_code error;
        if (!fs::exists(pathOf(segment.file), error)) {
            throw Error("frames " + std::to_string(segment.first) + " to " + std::to_string(segment.last) +
                        " are missing: there is no " + segment.file +
                        (fs::exists(pathOf(farm.folder()), error) ? "" : "; has the input changed since?"));
        }
    }
    if (!farm.writesPictures()) {
        Messages messages(farm.job().quiet);
        joinSegments(farm.job(), farm.chain(), farm.segments(), messages);
        const std::size_t count = farm.segments().size();
        messages.tell(farm.job().output + ": " + std::to_string(count) +
                      (count == 1 ? " segment joined" : " segments joined"));
    }
    if (!options.keep) removeFolder(pathOf(farm.folder()));
}

RenderSummary renderInSegments(const Catalogue& catalogue, const GlobalOptions& global, FarmOptions options,
                               Messages& messages) {
    const auto start = std::chrono::steady_clock::now();
    const InterruptionGuard guard;
    options.segments = 0;
    Farm farm(catalogue, global, options, Farm::Purpose::Write);
    const std::string& output = farm.job().output;
    std::error_code error;
    const bool isBegun = fs::exists(pathOf(farm.folder()), error);
    if (!farm.job().overwrite && !farm.writesPictures()) refuseExisting(output);
    farm.refuseExistingOutput();
    RenderSummary summary;
    summary.media = farm.description();
    fs::create_directory(pathOf(farm.folder()), error);
    if (error) throw Error("cannot make the folder " + farm.folder() + ": " + reasonOf(error));
    const auto there =
        std::count_if(farm.segments().begin(), farm.segments().end(),
                      [&](const Segment& segment) { return fs::exists(pathOf(segment.file), error); });
    if (isBegun) {
        messages.tell(output + ": goes on with " + std::to_string(there) + " of " +
                      std::to_string(farm.segments().size()) + " segments done");
    }
    try {
        for (const Segment& segment : farm.segments()) farm.render(segment, messages, summary.lost);
        messages.endParts();
        messages.enter(Phase::Finish);
        summary.frames = farm.finish(messages);
    } catch (const Error& failure) {
        fs::remove(pathOf(farm.folder()), error);  // Where nothing is in it.
        if (failure.status() <= 2 || !fs::exists(pathOf(farm.folder()), error)) throw;
        const std::string what = failure.what();
        throw Error(what.substr(0, what.find(';')) + "; the same command goes on with what is done",
                    failure.status());
    }
    removeFolder(pathOf(farm.folder()));
    messages.enter(Phase::Done);
    summary.bytes = farm.writtenBytes();
    summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return summary;
}

}  // namespace vireo
