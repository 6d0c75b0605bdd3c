// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_HOST_WORKERS_H
#define VIREO_TESTS_HOST_WORKERS_H

#include "host/hosting/worker_threads.h"

#include <thread>
#include <vector>

/// Threads to be lent, which count what they were used for.
class Workers : public hosting::WorkerThreads {
public:
    /// Without threads, which are promised all the same, the last part comes first.
    explicit Workers(int count, bool hasThreads = true) : count_(count), hasThreads_(hasThreads) {}

    int count() const override { return count_; }
    void run(int parts, const std::function<void(int)>& work) override {
        ++runs;
        std::vector<std::thread> threads;
        for (int part = parts - 1; part >= 0; --part) {
            if (hasThreads_) threads.emplace_back(work, part);
            if (!hasThreads_) work(part);
        }
        for (std::thread& thread : threads) thread.join();
    }

    int runs = 0;

private:
    int count_;
    bool hasThreads_;
};

#endif
