// SPDX-License-Identifier: MIT
#include "app/commands/render_queue.h"

#include "app/base/failures.h"
#include "app/base/files.h"
#include "app/base/progress_signal.h"
#include "app/commands/existing_output.h"
#include "app/commands/farm_segments.h"
#include "app/commands/render_options.h"
#include "engine/error.h"

#include <algorithm>
#include <exception>
#include <mutex>
#include <optional>
#include <set>
#include <thread>

namespace vireo {
namespace {

bool isInterrupted(const RenderOutcome& outcome) { return outcome.status > 2; }

class RenderQueue {
public:
    RenderQueue(const std::vector<QueuedRender>& renders, int jobs)
        : renders_(renders), jobs_(framesAtOnce(jobs)) {}

    std::vector<RenderOutcome> run() {
        const InterruptionGuard guard;
        ChainKeeper chain(jobs_);
        for (std::size_t next = 0; next < renders_.size() && !stop_;) {
            const std::size_t end = endOfPictures(next);
            if (end - next > 1 && jobs_ > 1) {
                renderAtOnce(next, end);
                next = end;
                continue;
            }
            Finished finished = render(renders_[next++], chain, {});
            stop_ = isInterrupted(finished.outcome);
            outcomes_.push_back(std::move(finished.outcome));
        }
        return std::move(outcomes_);
    }

private:
    struct Finished {
        RenderOutcome outcome;
        std::unique_ptr<Messages> messages;
    };

    /// The chain of the work that was done last, which others may share.
    class ChainKeeper {
    public:
        explicit ChainKeeper(int frames) : frames_(frames) {}

        FrameProcessor& of(const RenderWork& work) {
            if (work_ != &work) {
                static std::mutex making;
                const std::lock_guard lock(making);
                chain_ = chainOf(work.chain, work.options, frames_);
                work_ = &work;
            }
            return *chain_;
        }

    private:
        int frames_;
        const RenderWork* work_ = nullptr;
        std::unique_ptr<ChainProcessor> chain_;
    };

    /// Behind the pictures that may be rendered side by side: none reads what another one writes.
    std::size_t endOfPictures(std::size_t first) const {
        std::set<std::string> outputs;
        std::size_t end = first;
        while (end < renders_.size()) {
            const RenderJob& job = *renders_[end].job;
            if (job.output == "-" || !job.alsoTo.empty() || !writesOnePicture(job) ||
                outputs.contains(placeOf(job.input)))
                break;
            outputs.insert(placeOf(job.output));
            ++end;
        }
        return end;
    }

    static std::string placeOf(const std::string& name) { return utf8Of(pathOf(name).lexically_normal()); }

    /// `jobs` is how many threads it gets where not all of them.
    Finished render(const QueuedRender& queued, ChainKeeper& chains, std::optional<int> jobs) {
        RenderJob job = *queued.job;
        if (jobs) job.jobs = *jobs;
        // Not in braces: GCC 12 would destroy the outcome twice where the messages cannot be made.
        Finished finished;
        RenderOutcome& outcome = finished.outcome;
        outcome.input = job.input;
        outcome.outputs = job.outputs();
        // A dry run's result holds its notices.
        finished.messages = std::make_unique<Messages>(job.quiet || job.dryRun, job.progress, job.output);
        Messages& messages = *finished.messages;
        if (jobs) messages.hold();
        try {
            throwIfInterrupted();
            renderOrSkip(*queued.work, job, chains, messages, outcome);
        } catch (const Error& failure) {
            outcome.status = failure.status();
            outcome.error = failure.what();
        } catch (const std::exception& failure) {
            outcome.status = 1;
            outcome.error =
                (queued.work->isOneOfMany ? job.input + ": " : std::string()) + sentenceOf(failure);
        }
        if (outcome.status != 0 && !(jobs && isInterrupted(outcome))) messages.error(outcome.error);
        outcome.messages = messages.said();
        return finished;
    }

    static void renderOrSkip(const RenderWork& work, const RenderJob& job, ChainKeeper& chains,
                             Messages& messages, RenderOutcome& outcome) {
        try {
            FrameProcessor& chain = chains.of(work);
            outcome.isSkipped = work.options.skipExisting && isWholeOutput(job, chain);
            if (outcome.isSkipped) {
                messages.tell(job.output + " exists and is skipped");
                return;
            }
            makeFolderOf(job);
            outcome.summary = work.options.resume && !job.dryRun && !writesOnePicture(job)
                                  ? resumed(work, job, messages)
                                  : runJob(job, chain, messages);
        } catch (const Error& failure) {
            // A signal may have made something fail in its own words.
            if (failure.status() <= 2) throwIfInterrupted();
            throw;
        }
    }

    static RenderSummary resumed(const RenderWork& work, const RenderJob& job, Messages& messages) {
        FarmOptions farm;
        farm.render = work.options;
        farm.render.files = {job.input, job.output};
        farm.render.folder.clear();
        farm.render.saveSettings.clear();
        std::erase_if(farm.render.settings, [](const SettingsOption& option) {
            return option.kind == SettingsOption::Kind::SaveSettingsBytes;
        });
        farm.given = work.options.given;
        try {
            messages.enter(Phase::Open);
            const RenderSummary summary =
                renderInSegments(work.session.catalogue(), work.session.global(), std::move(farm), messages);
            tellDone(job, summary, messages);
            return summary;
        } catch (...) {
            messages.endParts();
            messages.enter(Phase::Failed);
            throw;
        }
    }

    static void makeFolderOf(const RenderJob& job) {
        const std::filesystem::path folder = pathOf(job.output).parent_path();
        std::error_code error;
        if (!job.folderIsMade || job.dryRun || std::filesystem::is_directory(folder, error)) return;
        std::filesystem::create_directories(folder, error);
        if (error) throw Error("cannot make the folder " + utf8Of(folder) + ": " + reasonOf(error));
    }

    void renderAtOnce(std::size_t first, std::size_t end) {
        const RenderJob& common = *renders_[first].job;
        Messages overall(common.quiet || common.dryRun, common.progress, common.output);
        const auto count = static_cast<std::int64_t>(end - first);
        if (!common.progress.json) {
            overall.progress(0, count);
            overall.enter(Phase::Render);
        }
        const ProgressSignal signal([&] { overall.answer(); });
        std::vector<std::optional<Finished>> finished(end - first);
        std::size_t next = first, told = 0;
        std::exception_ptr failure;
        std::mutex mutex;
        const auto tell = [&](Finished& one) {
            overall.release(*one.messages);
            outcomes_.push_back(std::move(one.outcome));
        };
        const auto work = [&] {
            ChainKeeper chain(1);
            std::unique_lock lock(mutex);
            while (next < end && !stop_) {
                const std::size_t own = next++;
                lock.unlock();
                Finished one = render(renders_[own], chain, 1);
                lock.lock();
                stop_ = stop_ || isInterrupted(one.outcome);
                finished[own - first] = std::move(one);
                while (told < finished.size() && finished[told] && !isInterrupted(finished[told]->outcome))
                    tell(*finished[told++]);
                if (!common.progress.json) overall.progress(static_cast<std::int64_t>(told), count);
            }
        };
        // What cannot even be told of one picture ends all of them.
        const auto guardedWork = [&] {
            try {
                work();
            } catch (...) {
                const std::lock_guard lock(mutex);
                if (failure == nullptr) failure = std::current_exception();
                stop_ = true;
            }
        };
        {
            std::vector<std::jthread> threads;
            try {
                for (std::int64_t i = 0; i < std::min<std::int64_t>(jobs_, count); ++i)
                    threads.emplace_back(guardedWork);
            } catch (const std::system_error&) {
                // Those that are there do all of it.
                if (threads.empty()) throw;
            }
        }
        Finished* interrupted = nullptr;
        for (; told < finished.size(); ++told) {
            if (!finished[told]) continue;
            if (!isInterrupted(finished[told]->outcome)) {
                tell(*finished[told]);
            } else if (interrupted == nullptr) {
                interrupted = &*finished[told];
            }
        }
        if (failure != nullptr) std::rethrow_exception(failure);
        if (interrupted == nullptr) return;
        interrupted->messages->error(interrupted->outcome.error);
        tell(*interrupted);
    }

    const std::vector<QueuedRender>& renders_;
    const int jobs_;
    bool stop_ = false;
    std::vector<RenderOutcome> outcomes_;
};

}  // namespace

std::vector<RenderOutcome> renderQueue(const std::vector<QueuedRender>& renders, int jobs) {
    return RenderQueue(renders, jobs).run();
}

}  // namespace vireo
