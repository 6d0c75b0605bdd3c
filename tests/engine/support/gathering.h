// SPDX-License-Identifier: MIT
#pragma once

#include <condition_variable>
#include <mutex>

namespace vireo::test {

/// Lets threads wait until so many of them are there at once. A std::latch would do, were it not for MinGW's,
/// which misses a wake-up that comes just before its wait.
class Gathering {
public:
    explicit Gathering(int wanted) : wanted_(wanted) {}

    void join() {
        std::unique_lock lock(mutex_);
        if (++here_ == wanted_) complete_.notify_all();
        complete_.wait(lock, [&] { return here_ >= wanted_; });
    }

private:
    std::mutex mutex_;
    std::condition_variable complete_;
    int wanted_;
    int here_ = 0;
};

}  // namespace vireo::test
