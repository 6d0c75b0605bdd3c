// SPDX-License-Identifier: MIT
#include "app/preview/playback.h"

#include "app/base/interruption.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vireo {
namespace {

FrameClock::Time now() { return std::chrono::steady_clock::now(); }

/// Signals wake nobody.
constexpr std::chrono::milliseconds longestWait{100};

}  // namespace

void Playback::togglePause() {
    const std::lock_guard lock(mutex_);
    isPaused_ = !isPaused_;
    if (isEnded_) {
        isPaused_ = false;
        wishFor(part_.first);
    } else if (!isPaused_) {
        clock_.start(now(), shown_.seconds);
    }
    changed_.notify_all();
}

void Playback::step(int frames) {
    const std::lock_guard lock(mutex_);
    isPaused_ = true;
    if (frames == 1 && !wish_) {
        if (!isEnded_) ++steps_;
        changed_.notify_all();
    } else {
        wishFor(goal() + frames);
    }
}

void Playback::skip(double seconds) {
    const std::lock_guard lock(mutex_);
    wishFor(goal() + std::llround(seconds * part_.frameRate));
}

void Playback::jump(double share) {
    const std::lock_guard lock(mutex_);
    if (!part_.last) return;
    wishFor(part_.first + std::llround(share * static_cast<double>(*part_.last - part_.first)));
}

void Playback::close() {
    const std::lock_guard lock(mutex_);
    isClosed_ = true;
    stop();
}

void Playback::wishFor(std::int64_t frame) {
    if (part_.last) frame = std::min(frame, *part_.last);
    wish_ = std::max(frame, part_.first);
    steps_ = 0;
    stop();
}

/// The frame that is shown once everything asked for is done.
std::int64_t Playback::goal() const {
    if (wish_) return *wish_;
    const std::int64_t frame = awaited_.value_or(shown_.number) + steps_;
    return part_.last ? std::min(frame, *part_.last) : frame;
}

void Playback::stop() {
    if (stop_ != nullptr) stop_->request();
    changed_.notify_all();
}

void Playback::begin(StopRequest& stop, const Part& part) {
    const std::lock_guard lock(mutex_);
    stop_ = &stop;
    part_ = part;
    isFirst_ = true;
    isEnded_ = false;
    if (isClosed_ || wish_) stop.request();
}

void Playback::end() {
    const std::lock_guard lock(mutex_);
    stop_ = nullptr;
}

bool Playback::waitFor(const FramePosition& position) {
    std::unique_lock lock(mutex_);
    while (!isClosed_ && !wish_ && !stop_->requested()) {
        if (isFirst_ || steps_ > 0) {
            if (!std::exchange(isFirst_, false)) --steps_;
            awaited_.reset();
            clock_.start(now(), position.seconds);
            clock_.showed(now());
            shown_ = position;
            return true;
        }
        if (isPaused_) {
            changed_.wait_for(lock, longestWait);
        } else if (const auto due = clock_.due(position.seconds); now() < due) {
            changed_.wait_until(lock, std::min(due, now() + longestWait));
        } else {
            if (clock_.isTooLate(now(), position.seconds, 1 / part_.frameRate)) return false;
            clock_.showed(now());
            shown_ = position;
            return true;
        }
    }
    return false;
}

bool Playback::isTooLate(const FramePosition& position) const {
    const std::lock_guard lock(mutex_);
    if (isClosed_ || wish_) return true;
    return !isFirst_ && !isPaused_ && clock_.isTooLate(now(), position.seconds, 1 / part_.frameRate);
}

std::optional<std::int64_t> Playback::nextWish() {
    std::unique_lock lock(mutex_);
    isEnded_ = true;
    steps_ = 0;
    while (!isClosed_ && !wish_) {
        throwIfInterrupted();
        changed_.wait_for(lock, longestWait);
    }
    if (isClosed_) return std::nullopt;
    isEnded_ = false;
    awaited_ = std::exchange(wish_, std::nullopt);
    return awaited_;
}

bool Playback::isOver() const {
    const std::lock_guard lock(mutex_);
    return isClosed_ || wish_.has_value();
}

bool Playback::isPaused() const {
    const std::lock_guard lock(mutex_);
    return isPaused_;
}

}  // namespace vireo
