// SPDX-License-Identifier: MIT
#include "app/render/pipeline.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace vireo {
namespace {

/// A source frame and its pixels, which are converted when they are first asked for: by the thread that
/// renders the frame, or by one that looks back at it.
class SourceSlot {
public:
    SourceSlot(std::unique_ptr<SourceFrame> frame, std::shared_ptr<SourceSlot> earlier)
        : frame_(std::move(frame)), earlier_(std::move(earlier)) {}

    const FramePosition& position() const { return frame_->position; }
    const SourceFrame& frame() const { return *frame_; }

    /// Those of the nearest earlier frame where this one is damaged; null where there is none.
    PicturePtr picture(std::uint32_t format) {
        std::call_once(converted_, [&] {
            try {
                picture_ = frame_->picture(format);
            } catch (const DamagedFrame& error) {
                damage_ = error.what();
                if (earlier_ != nullptr) picture_ = earlier_->picture(format);
            }
            earlier_.reset();
        });
        return picture_;
    }

    /// Hands the pixels over, where nobody looks back at them.
    PicturePtr take(std::uint32_t format) {
        picture(format);
        return std::move(picture_);
    }

    /// Why the frame cannot be read; nothing where it can. Known once picture() was called.
    const std::optional<std::string>& damage() const { return damage_; }

private:
    std::once_flag converted_;
    std::unique_ptr<SourceFrame> frame_;
    std::shared_ptr<SourceSlot> earlier_;
    PicturePtr picture_;
    std::optional<std::string> damage_;
};

using Slots = std::vector<std::shared_ptr<SourceSlot>>;

/// The frames that one frame may look back at, itself last.
class SlotHistory : public SourceHistory {
public:
    SlotHistory(Slots slots, std::uint32_t format) : slots_(std::move(slots)), format_(format) {}

    PicturePtr frame(std::int64_t number) const override {
        PicturePtr picture;
        for (auto slot = find(number); slot != slots_.end() && picture == nullptr; ++slot)
            picture = (*slot)->picture(format_);
        return picture;
    }

    FramePosition position(std::int64_t number) const override { return (*find(number))->position(); }

    SourceSlot& current() const { return *slots_.back(); }

private:
    /// The last slot up to the number, or the first of all.
    Slots::const_iterator find(std::int64_t number) const {
        const auto after = std::upper_bound(
            slots_.begin(), slots_.end(), number,
            [](std::int64_t wanted, const auto& slot) { return wanted < slot->position().number; });
        return after == slots_.begin() ? after : std::prev(after);
    }

    Slots slots_;
    std::uint32_t format_;
};

struct Result {
    std::int64_t frame = 0;
    std::unique_ptr<OutputFrame> output;  ///< Null where the frame is lost.
    bool impaired = false;
    std::string reason;
};

class Pipeline {
public:
    Pipeline(Media& media, FrameProcessor& processor, int jobs, StopRequest& stop,
             const PipelineEvents& events)
        : media_(media), processor_(processor), jobs_(jobs), stop_(stop), events_(events) {}

    std::int64_t run() {
        std::vector<std::jthread> threads;
        // Where one cannot be started, the others have to end too.
        guarded([&] {
            threads.emplace_back([this] { guarded([this] { readAll(); }); });
            for (int i = 0; i < jobs_; ++i)
                threads.emplace_back([this] { guarded([this] { renderAll(); }); });
        });
        std::int64_t frames = 0;
        guarded([&] { frames = writeAll(); });
        threads.clear();
        // A signal may have made a thread fail in its own words.
        throwIfInterrupted();
        if (failure_ != nullptr) std::rethrow_exception(failure_);
        return frames;
    }

private:
    /// Keeps the first failure and makes every thread end.
    template <class Work>
    void guarded(Work work) {
        try {
            work();
        } catch (...) {
            const std::lock_guard lock(mutex_);
            if (failure_ == nullptr) failure_ = std::current_exception();
            stop_.request();
        }
        changed_.notify_all();
    }

    /// Waits until the condition holds; false when the work was stopped. Signals notify nobody, hence the
    /// short waits.
    template <class Condition>
    bool waitFor(std::unique_lock<std::mutex>& lock, Condition condition) {
        while (!condition()) {
            if (stop_.requested()) return false;
            changed_.wait_for(lock, std::chrono::milliseconds(100));
        }
        return !stop_.requested();
    }

    void readAll() {
        const std::int64_t lookBack = processor_.lookBack();
        std::deque<std::shared_ptr<SourceSlot>> recent;
        while (std::unique_ptr<SourceFrame> frame = media_.reader->read()) {
            const bool preRoll = frame->preRoll;
            const std::int64_t oldest = frame->position.number - lookBack;
            recent.push_back(std::make_shared<SourceSlot>(
                std::move(frame), lookBack == 0 || recent.empty() ? nullptr : recent.back()));
            while (recent.front()->position().number < oldest) recent.pop_front();
            if (preRoll) continue;

            std::unique_lock lock(mutex_);
            if (!waitFor(lock, [&] { return underWay_ < jobs_; })) return;
            ++underWay_;
            waiting_.emplace_back(read_++, Slots(recent.begin(), recent.end()));
            changed_.notify_all();
        }
        const std::lock_guard lock(mutex_);
        allRead_ = true;
    }

    void renderAll() {
        while (true) {
            std::unique_lock lock(mutex_);
            if (!waitFor(lock, [&] { return !waiting_.empty() || allRead_; }) || waiting_.empty()) return;
            auto [index, slots] = std::move(waiting_.front());
            waiting_.pop_front();
            lock.unlock();

            Result result = render({std::move(slots), media_.pictureFormat});

            lock.lock();
            results_.emplace(index, std::move(result));
            changed_.notify_all();
        }
    }

    Result render(const SlotHistory& history) const {
        SourceSlot& slot = history.current();
        PicturePtr source =
            processor_.lookBack() == 0 ? slot.take(media_.pictureFormat) : slot.picture(media_.pictureFormat);
        const std::int64_t number = slot.position().number;
        if (slot.damage()) return {number, nullptr, false, *slot.damage()};
        const PicturePtr rendered = processor_.process(std::move(source), slot.position(), history);
        return {number, media_.writer->convert(*rendered, slot.frame()), slot.frame().impaired, {}};
    }

    std::int64_t writeAll() {
        std::int64_t frames = 0;
        for (std::int64_t index = 0;; ++index) {
            std::unique_lock lock(mutex_);
            if (!waitFor(lock, [&] { return results_.contains(index) || (allRead_ && index == read_); }))
                return frames;
            const auto found = results_.find(index);
            if (found == results_.end()) return frames;
            Result result = std::move(found->second);
            results_.erase(found);
            --underWay_;
            changed_.notify_all();
            lock.unlock();

            if (result.output == nullptr) {
                events_.damaged(Damage::Lost, result.frame, result.reason);
                continue;
            }
            if (result.impaired) events_.damaged(Damage::Impaired, result.frame, "it was read in part");
            media_.writer->write(std::move(result.output));
            events_.written(++frames);
        }
    }

    Media& media_;
    FrameProcessor& processor_;
    const int jobs_;  ///< As many frames are on their way from reader to writer.
    StopRequest& stop_;
    const PipelineEvents& events_;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::exception_ptr failure_;
    std::deque<std::pair<std::int64_t, Slots>> waiting_;
    std::map<std::int64_t, Result> results_;
    std::int64_t read_ = 0;
    int underWay_ = 0;
    bool allRead_ = false;
};

}  // namespace

std::int64_t runPipeline(Media& media, FrameProcessor& processor, int jobs, StopRequest& stop,
                         const PipelineEvents& events) {
    return Pipeline(media, processor, jobs, stop, events).run();
}

}  // namespace vireo
