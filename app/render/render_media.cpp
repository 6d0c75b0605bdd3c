// SPDX-License-Identifier: MIT
#include "app/render/render_media.h"

#include "app/base/interruption.h"
#include "app/base/messages.h"
#include "app/render/pipeline.h"
#include "engine/error.h"

#include <chrono>
#include <thread>

namespace vireo {
namespace {

/// Numbers of damaged frames, as people write them: "frames 3, 7-9".
class DamageList {
public:
    void add(std::int64_t number) {
        if (!runs_.empty() && runs_.back().second + 1 == number) {
            runs_.back().second = number;
        } else if (runs_.size() < longest) {
            runs_.emplace_back(number, number);
        } else {
            cut_ = true;
        }
        ++count_;
    }

    std::int64_t count() const { return count_; }

    std::string text() const {
        std::string text = count_ > 1 ? "frames " : "frame ";
        const std::size_t empty = text.size();
        for (const auto& [first, last] : runs_) {
            if (text.size() > empty) text += ", ";
            text += std::to_string(first);
            if (last > first) text += '-' + std::to_string(last);
        }
        return cut_ ? text + " and more" : text;
    }

private:
    static constexpr std::size_t longest = 50;
    std::vector<std::pair<std::int64_t, std::int64_t>> runs_;
    std::int64_t count_ = 0;
    bool cut_ = false;
};

}  // namespace

int framesAtOnce(int jobs) {
    return jobs > 0 ? jobs : static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

RenderSummary renderMedia(const RenderJob& job, FrameProcessor& processor) {
    const auto start = std::chrono::steady_clock::now();
    const InterruptionGuard guard;
    StopRequest stop;
    Messages messages(job.quiet);
    DamageList lost;
    DamageList impaired;
    std::string reason;

    Media media = openMedia(job, processor, stop, messages);
    const std::int64_t expected = media.reader->info().framesExpected;
    const int jobs = framesAtOnce(job.jobs);
    // Frames side by side keep the cores busier than parts of one.
    processor.begin(expected == 1 || job.atOnce ? jobs : 1);
    const std::int64_t frames = runPipeline(
        media, processor, jobs, stop,
        {.written = [&](std::int64_t written) { messages.progress(written, expected); },
         .damaged =
             [&](Damage kind, std::int64_t frame, const std::string& why) {
                 if (job.strict)
                     throw Error(job.input + ": frame " + std::to_string(frame) + " is damaged: " + why);
                 if (kind == Damage::Lost && lost.count() == 0) reason = why;
                 (kind == Damage::Lost ? lost : impaired).add(frame);
             }});
    if (frames == 0) {
        throw Error(job.input + (lost.count() > 0 ? ": no frame can be read: " + reason
                                                  : ": there is no frame to render in the range asked for"));
    }
    media.writer->finish();

    if (lost.count() > 0)
        messages.warning(job.input + ": damaged and left out: " + lost.text() + " (" + reason + ")");
    if (impaired.count() > 0)
        messages.warning(job.input + ": damaged and rendered as far as they can be read: " + impaired.text());
    return {frames, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count()};
}

}  // namespace vireo
