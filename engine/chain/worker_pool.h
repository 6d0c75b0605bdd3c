// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CHAIN_WORKER_POOL_H
#define VIREO_ENGINE_CHAIN_WORKER_POOL_H

#include "host/hosting/worker_threads.h"

#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace vireo {

/// Threads that render the parts of a frame side by side. They start when they are first needed and stay.
class WorkerPool : public hosting::WorkerThreads {
public:
    /// `threads` work at a time, the caller's among them; at least 1.
    explicit WorkerPool(int threads) : threads_(threads) {}
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;
    ~WorkerPool() override;

    int count() const override { return threads_; }

    /// Of several exceptions the first is thrown. Any thread may call, also from within work. Needs no
    /// memory.
    void run(int parts, const std::function<void(int)>& work) override;

private:
    /// One call of run(), on its caller's stack.
    struct Task {
        const std::function<void(int)>* work;
        int count;
        int next = 0;
        int running = 0;
        std::exception_ptr failure = nullptr;
        Task* behind = nullptr;  ///< In the queue.
    };

    void start(int wanted);
    void serve();
    void runNext(Task& task, std::unique_lock<std::mutex>& lock);
    void leaveQueue(Task& task);

    const int threads_;
    std::mutex mutex_;
    std::condition_variable wanted_;  ///< There is a task, or the pool ends.
    std::condition_variable done_;
    Task* queue_ = nullptr;  ///< Those of which something is not begun, the oldest first.
    bool ending_ = false;
    std::vector<std::thread> workers_;
};

}  // namespace vireo

#endif
