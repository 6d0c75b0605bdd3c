// SPDX-License-Identifier: MIT
#include "app/render/render_media.h"

#include "app/base/interruption.h"
#include "app/base/messages.h"
#include "app/base/progress_signal.h"
#include "app/render/pipeline.h"
#include "engine/error.h"

#include <algorithm>
#include <chrono>
#include <thread>

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

RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor) {
    Messages messages(job.quiet, job.progress, job.output);
    return renderMedia(job, processor, messages);
}

RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor, Messages& messages) {
    const auto start = std::chrono::steady_clock::now();
    const InterruptionGuard guard;
    const ProgressSignal signal([&] { messages.answer(); });
    StopRequest stop;
    RenderSummary summary;
    std::string reason;
    Ending ending(messages);

    messages.enter(Phase::Open);
    Media media = openMedia(job, processor, stop, messages);
    summary.media = media.description;
    if (job.dryRun) {
        ending.isGood();
        return summary;
    }
    const std::int64_t expected = media.reader->info().framesExpected;
    const int jobs = framesAtOnce(job.jobs);
    // Frames side by side keep the cores busier than parts of one.
    processor.begin(expected == 1 || job.atOnce ? jobs : 1);
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
    ending.isGood();
    summary.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return summary;
}

}  // namespace vireo
