// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/obs/worker.h"

#include <algorithm>
#include <chrono>
#include <new>
#include <utility>

namespace vireo::obs {
namespace {

/// What one filter may take of the machine that also encodes.
std::uint32_t threadsOfAFrame() { return std::clamp(std::thread::hardware_concurrency() / 2, 1U, 4U); }

VireoFrame frameOver(Picture& picture) {
    VireoFrame frame{};
    frame.structSize = sizeof frame;
    frame.width = picture.width;
    frame.height = picture.height;
    frame.layout = VireoBgra;
    frame.pixels = picture.pixels.data();
    frame.stride = std::int64_t{4} * picture.width;
    return frame;
}

Chain newChain() {
    VireoChain* chain = nullptr;
    if (vireoChainNew(engine(), &chain) != VireoDone) throw std::bad_alloc();
    return Chain(chain);
}

}  // namespace

Worker::Worker(std::function<void(const std::string&)> warn) : warn_(std::move(warn)), chain_(newChain()) {
    VireoStream* stream = nullptr;
    if (vireoStreamNew(chain_.get(), &stream) != VireoDone) throw std::bad_alloc();
    stream_.reset(stream);
    vireoChainSetThreads(chain_.get(), threadsOfAFrame());
    thread_ = std::thread(&Worker::run, this);
}

Worker::~Worker() {
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void Worker::setChain(ChainRequest request) {
    {
        const std::lock_guard lock(mutex_);
        request_ = std::move(request);
    }
    wake_.notify_one();
}

void Worker::restart(double rate) {
    const std::lock_guard lock(mutex_);
    rate_ = rate;
    ++clip_;
    pending_.reset();
    finished_.reset();
    statistics_.rendered = statistics_.skipped = 0;
}

void Worker::submit(Picture& picture) {
    {
        const std::lock_guard lock(mutex_);
        if (pending_) {
            ++statistics_.skipped;
        } else {
            pending_ = std::exchange(spare_, std::nullopt).value_or(Picture());
        }
        std::swap(*pending_, picture);
    }
    wake_.notify_one();
}

bool Worker::take(Picture& picture) {
    const std::lock_guard lock(mutex_);
    if (!finished_) return false;
    std::swap(*finished_, picture);
    spare_ = std::exchange(finished_, std::nullopt);
    return true;
}

bool Worker::isEmpty() const {
    const std::lock_guard lock(mutex_);
    return isEmpty_;
}

bool Worker::hasFailed() const {
    const std::lock_guard lock(mutex_);
    return hasFailed_;
}

Statistics Worker::statistics() const {
    const std::lock_guard lock(mutex_);
    Statistics statistics = statistics_;
    statistics.problem = settingsProblem_.empty() ? renderProblem_ : settingsProblem_;
    return statistics;
}

void Worker::run() {
    std::int64_t renderedClip = 0;
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [this] { return isEnding_ || request_ || pending_; });
        if (isEnding_) return;
        if (request_) {
            const ChainRequest request = *std::exchange(request_, std::nullopt);
            lock.unlock();
            changeChain(request);
            lock.lock();
            continue;
        }
        Picture picture = *std::exchange(pending_, std::nullopt);
        const std::int64_t clip = clip_;
        const double rate = rate_;
        // Skipped frames are none of the clip's: filters that look back see those that were rendered.
        const std::int64_t frame = picture.tick - statistics_.skipped;
        lock.unlock();
        if (std::exchange(renderedClip, clip) != clip) vireoStreamRestart(stream_.get());
        render(picture, frame, rate > 0 ? static_cast<double>(picture.tick) / rate : -1, rate);
        lock.lock();
        if (clip == clip_ && !hasFailed_) {
            finished_ = std::exchange(result_, std::move(picture));
            ++statistics_.rendered;
        }
    }
}

void Worker::changeChain(const ChainRequest& request) {
    const Chain candidate = newChain();
    std::string problem = request.addTo(candidate.get());
    if (problem.empty()) {
        // The stream's earlier frames stay, so that Ghosting outlives the drag of a slider.
        while (vireoChainLength(chain_.get()) > 0) vireoChainRemove(chain_.get(), 0);
        problem = request.addTo(chain_.get());
        const std::lock_guard lock(mutex_);
        isEmpty_ = vireoChainLength(chain_.get()) == 0;
        hasFailed_ = false;
    }
    report(&Worker::settingsProblem_, problem);
}

void Worker::render(Picture& picture, std::int64_t frame, double seconds, double rate) {
    using Clock = std::chrono::steady_clock;
    result_.width = picture.width;
    result_.height = picture.height;
    result_.tick = picture.tick;
    result_.pixels.resize(picture.pixels.size());

    VireoTime time{};
    time.structSize = sizeof time;
    time.frame = frame;
    time.rate = rate;
    time.seconds = seconds;
    const VireoFrame source = frameOver(picture);
    VireoFrame result = frameOver(result_);
    const auto begin = Clock::now();
    const bool failed = vireoStreamRender(stream_.get(), &source, &result, &time) != VireoDone;
    const double took = std::chrono::duration<double, std::milli>(Clock::now() - begin).count();
    {
        const std::lock_guard lock(mutex_);
        constexpr double weight = 1.0 / 16;
        double& average = statistics_.milliseconds;
        average += (took - average) * (statistics_.rendered == 0 ? 1 : weight);
    }
    report(&Worker::renderProblem_, failed ? vireoLastError()->sentence : "");
    const std::lock_guard lock(mutex_);
    hasFailed_ = failed;
}

void Worker::report(std::string Worker::*kind, const std::string& problem) {
    {
        const std::lock_guard lock(mutex_);
        if (this->*kind == problem) return;
        this->*kind = problem;
    }
    if (!problem.empty()) warn_(problem);
}

}  // namespace vireo::obs
