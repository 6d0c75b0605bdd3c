// SPDX-License-Identifier: MIT
#include "app/render/render_media.h"

#include "app/base/interruption.h"
#include "app/base/messages.h"
#include "app/base/progress_signal.h"
#include "app/media/pass_log.h"
#include "app/render/pipeline.h"
#include "engine/error.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <vector>

namespace vireo {
namespace {

void add(FrameRuns& runs, std::int64_t frame) {
    if (!runs.empty() && runs.back().second + 1 == frame) {
        runs.back().second = frame;
    } else {
        runs.emplace_back(frame, frame);
    }
}

/// As people write them: "frames 3, 7-9".
std::string textOf(const FrameRuns& runs) {
    constexpr std::size_t longest = 50;
    const bool isOne = runs.size() == 1 && runs.front().first == runs.front().second;
    std::string text = isOne ? "frame" : "frames";
    for (std::size_t i = 0; i < std::min(runs.size(), longest); ++i) {
        const auto& [first, last] = runs[i];
        text += (i == 0 ? " " : ", ") + std::to_string(first);
        if (last > first) text += '-' + std::to_string(last);
    }
    return runs.size() > longest ? text + " and more" : text;
}

/// Tells how a render ended, whichever way it does.
class Ending {
public:
    explicit Ending(Messages& messages) : messages_(messages) {}
    Ending(const Ending&) = delete;
    Ending& operator=(const Ending&) = delete;
    ~Ending() { messages_.enter(phase_); }

    void isGood() { phase_ = Phase::Done; }

private:
    Messages& messages_;
    Phase phase_ = Phase::Failed;
};

}  // namespace

int framesAtOnce(int jobs) {
    return jobs > 0 ? jobs : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

namespace {

/// How many frames may be on their way, by their size.
int framesInMemory(const SourceInfo& info) {
    constexpr std::int64_t pixelsAtOnce = 1 << 29;
    const std::int64_t pixels =
        std::max<std::int64_t>(1, static_cast<std::int64_t>(info.width) * info.height);
    return static_cast<int>(std::clamp<std::int64_t>(pixelsAtOnce / pixels, 1, 1 << 16));
}

/// Renders to all outputs of a job, or only opens them.
RenderSummary renderOnce(const RenderJob& job, FrameProcessor& processor, Messages& messages) {
    StopRequest stop;
    RenderSummary summary;
    std::string reason;

    messages.enter(Phase::Open);
    Media media = openMedia(job, processor, stop, messages);
    summary.media = media.description;
    if (job.dryRun) return summary;
    const std::int64_t expected = media.reader->info().framesExpected;
    const int threads = framesAtOnce(job.jobs);
    const int jobs = std::min(threads, framesInMemory(media.reader->info()));
    // Frames side by side keep the cores busier than parts of one.
    processor.begin(expected == 1 || job.atOnce ? threads : std::max(1, threads / jobs));
    messages.progress(0, expected);
    messages.enter(Phase::Render);
    summary.frames = runPipeline(
        media, processor, jobs, stop,
        {.written = [&](std::int64_t written) { messages.progress(written, expected); },
         .damaged =
             [&](Damage kind, std::int64_t frame, const std::string& why) {
                 if (job.strict)
                     throw Error(job.input + ": frame " + std::to_string(frame) + " is damaged: " + why);
                 if (kind == Damage::Lost && summary.lost.empty()) reason = why;
                 add(kind == Damage::Lost ? summary.lost : summary.impaired, frame);
             }});
    if (summary.frames == 0) {
        throw Error(job.input + (summary.lost.empty() ? ": there is no frame to render in the range asked for"
                                                      : ": no frame can be read: " + reason));
    }
    messages.enter(Phase::Finish);
    media.writer->finish();
    media.reader.reset();  // Windows keeps a file that is open, and the output may take the input's place
    media.writer->appear();
    summary.bytes = media.writer->bytes();

    if (!summary.lost.empty()) {
        messages.warning(MessageCode::FramesLost,
                         job.input + ": damaged and left out: " + textOf(summary.lost) + " (" + reason + ")");
    }
    if (!summary.impaired.empty()) {
        messages.warning(
            MessageCode::FramesImpaired,
            job.input + ": damaged and rendered as far as they can be read: " + textOf(summary.impaired));
    }
    return summary;
}

bool hasTwoPasses(const RenderJob& job) {
    return job.twoPass || std::any_of(job.alsoTo.begin(), job.alsoTo.end(), hasTwoPasses);
}

/// Prepares the outputs that are encoded in two passes for the second one. Returns what the first one renders
/// to.
RenderJob firstPass(RenderJob& job) {
    std::vector<RenderJob> first;
    const auto prepare = [&](RenderJob& output) {
        if (!output.twoPass) return;
        output.passLog = std::make_shared<PassLog>();
        first.push_back(output);
        first.back().pass = 1;
        first.back().alsoTo.clear();
        output.pass = 2;
    };
    prepare(job);
    for (RenderJob& output : job.alsoTo) prepare(output);
    RenderJob pass = std::move(first.front());
    pass.alsoTo.assign(first.begin() + 1, first.end());
    return pass;
}

RenderJob dryRunOf(RenderJob job) {
    job.dryRun = true;
    for (RenderJob& other : job.alsoTo) other.dryRun = true;
    return job;
}

RenderSummary renderTwice(RenderJob job, FrameProcessor& processor, Messages& messages) {
    if (job.input == "-")
        throw Error(Fault::Usage, "--two-pass reads its input twice, which standard input cannot be");
    // What the second pass refuses need not wait for the first.
    RenderSummary opened = renderOnce(dryRunOf(job), processor, messages);
    if (job.dryRun) return opened;
    const RenderJob first = firstPass(job);
    renderOnce(first, processor, messages);
    return renderOnce(job, processor, messages);
}

}  // namespace

RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor) {
    Messages messages(job.quiet, job.progress, job.output);
    return renderMedia(job, processor, messages);
}

RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor, Messages& messages) {
    const auto start = std::chrono::steady_clock::now();
    const InterruptionGuard guard;
    const ProgressSignal signal([&] { messages.answer(); });
    Ending ending(messages);
    RenderSummary summary =
        hasTwoPasses(job) ? renderTwice(job, processor, messages) : renderOnce(job, processor, messages);
    ending.isGood();
    summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return summary;
}

}  // namespace vireo
