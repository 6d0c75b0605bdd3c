// SPDX-License-Identifier: GPL-2.0-or-later
// The thread on which a filter's chain renders, so that OBS never waits for it.
#ifndef VIREO_OBS_WORKER_H
#define VIREO_OBS_WORKER_H

#include "bridges/obs/settings.h"

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vireo::obs {

/// BGRA with straight alpha, rows from the top without gaps.
struct Picture {
    int width = 0;
    int height = 0;
    std::int64_t tick = 0;  ///< OBS's frames since the filter was switched on.
    std::vector<std::uint8_t> pixels;
};

struct Statistics {
    std::int64_t rendered = 0;  ///< Since the filter was switched on, as the next.
    std::int64_t skipped = 0;   ///< Frames that came while the chain was still busy with others.
    double milliseconds = 0;    ///< Of a frame, on average over the last ones.
    std::string problem;        ///< Why the chain is not what the settings ask for, or does not render.
};

/// All calls return at once. Of frames that wait, the newest is rendered next, and the others are skipped.
class Worker {
public:
    /// `warn` is told of each new problem, on the worker's thread.
    explicit Worker(std::function<void(const std::string&)> warn);
    ~Worker();

    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// From the next frame on. What cannot be a chain leaves the one that was there before.
    void setChain(ChainRequest request);

    /// The next frame is the clip's first.
    void restart(double rate);

    /// Exchanges the picture for one whose pixels are free to be overwritten.
    void submit(Picture& picture);

    /// Exchanges the picture for the last finished one, where there is a new one.
    bool take(Picture& picture);

    /// Whether there is no filter, so that pictures stay as they are.
    bool isEmpty() const;

    /// Whether the chain did not render the last picture, as where it is too large.
    bool hasFailed() const;

    Statistics statistics() const;

private:
    void run();
    void changeChain(const ChainRequest& request);
    void render(Picture& picture, std::int64_t frame, double seconds, double rate);
    void report(std::string Worker::*kind, const std::string& problem);

    std::function<void(const std::string&)> warn_;
    Chain chain_;
    Stream stream_;  ///< Of the chain, which outlives it.
    Picture result_;

    mutable std::mutex mutex_;
    std::condition_variable wake_;
    std::optional<ChainRequest> request_;
    std::optional<Picture> pending_;
    std::optional<Picture> finished_;
    std::optional<Picture> spare_;
    Statistics statistics_;
    std::string settingsProblem_;
    std::string renderProblem_;
    double rate_ = 0;
    std::int64_t clip_ = 0;  ///< Counts restarts.
    bool isEmpty_ = true;
    bool hasFailed_ = false;
    bool isEnding_ = false;

    std::thread thread_;
};

}  // namespace vireo::obs

#endif
