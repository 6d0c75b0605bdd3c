// SPDX-License-Identifier: MIT
#include "engine/chain/worker_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>

namespace vireo {
namespace {

/// How often each part ran. The counts are no atomics: a part that two threads run is a race.
std::vector<int> runs(WorkerPool& pool, int parts) {
    std::vector<int> counts(static_cast<std::size_t>(std::max(parts, 0)));
    pool.run(parts, [&](int part) { ++counts.at(static_cast<std::size_t>(part)); });
    return counts;
}

std::vector<int> once(int parts) { return std::vector<int>(static_cast<std::size_t>(std::max(parts, 0)), 1); }

/// Lets parts wait until so many of them are under way at once.
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

std::string failureOf(WorkerPool& pool, int parts, const std::function<void(int)>& work) {
    try {
        pool.run(parts, work);
        return {};
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

TEST(WorkerPool, RunsEveryPartOnce) {
    for (const int threads : {1, 2, 3, 8}) {
        const WorkerPool idle(threads);
        WorkerPool pool(threads);
        EXPECT_EQ(pool.count(), threads);
        for (const int parts : {-1, 0, 1, 2, 3, 7, 8, 9, 100, 1000}) {
            EXPECT_EQ(runs(pool, parts), once(parts)) << parts << " parts on " << threads;
        }
    }
}

TEST(WorkerPool, WorksOnAsManyThreadsAsItSays) {
    for (const int threads : {2, 5}) {
        WorkerPool pool(threads);
        for (int round = 0; round < 3; ++round) {
            Gathering all(threads);  // without so many threads the parts wait for ever
            std::mutex mutex;
            std::set<std::thread::id> seen;
            pool.run(threads, [&](int) {
                all.join();
                const std::lock_guard lock(mutex);
                seen.insert(std::this_thread::get_id());
            });
            EXPECT_EQ(seen.size(), static_cast<std::size_t>(threads));
            EXPECT_TRUE(seen.contains(std::this_thread::get_id()));
        }
    }
    // What few parts began more parts may go on with.
    WorkerPool pool(4);
    EXPECT_EQ(runs(pool, 2), once(2));
    Gathering all(4);
    pool.run(4, [&](int) { all.join(); });
}

TEST(WorkerPool, MayBeUsedFromWithinItsWork) {
    for (const int threads : {1, 2, 3, 6}) {
        WorkerPool pool(threads);
        for (int round = 0; round < 20; ++round) {
            std::vector<std::vector<int>> counts(5, std::vector<int>(4 * 3));
            pool.run(5, [&](int outer) {
                pool.run(4, [&](int middle) {
                    pool.run(3, [&](int inner) {
                        ++counts[static_cast<std::size_t>(outer)]
                                [static_cast<std::size_t>(3 * middle + inner)];
                    });
                });
            });
            for (const std::vector<int>& inside : counts) ASSERT_EQ(inside, once(12)) << threads;
        }
    }
}

TEST(WorkerPool, MayBeUsedByManyThreads) {
    for (const int threads : {1, 2, 4}) {
        WorkerPool pool(threads);
        std::atomic<int> wrong = 0;
        std::vector<std::thread> callers;
        for (int caller = 0; caller < 5; ++caller) {
            callers.emplace_back([&, caller] {
                for (int round = 0; round < 100; ++round) {
                    const int parts = 1 + (7 * caller + round) % 13;
                    if (runs(pool, parts) != once(parts)) ++wrong;
                    const bool fails = round % 3 == caller % 3;
                    const std::string failure = failureOf(pool, parts, [&](int) {
                        if (fails) throw std::runtime_error(std::to_string(caller));
                    });
                    if (failure != (fails ? std::to_string(caller) : "")) ++wrong;
                }
            });
        }
        for (std::thread& caller : callers) caller.join();
        EXPECT_EQ(wrong, 0) << threads;
    }
}

TEST(WorkerPool, ThrowsWhatAPartThrowsAndLeavesTheRestOut) {
    for (const int threads : {1, 2, 4}) {
        WorkerPool pool(threads);
        for (const int parts : {1, 2, 5, 200}) {
            for (const int bad : {0, parts / 2, parts - 1}) {
                std::atomic<int> begun = 0;
                const std::string failure = failureOf(pool, parts, [&](int part) {
                    ++begun;
                    if (part == bad) throw std::runtime_error("part " + std::to_string(part));
                });
                EXPECT_EQ(failure, "part " + std::to_string(bad));
                EXPECT_GT(begun, bad);
            }
        }
        // All fail: the caller gets one of them, and parts that were not begun stay so.
        std::atomic<int> begun = 0;
        EXPECT_NE(failureOf(pool, 100000,
                            [&](int part) {
                                ++begun;
                                throw std::runtime_error(std::to_string(part));
                            }),
                  "");
        EXPECT_LE(begun, threads);
        EXPECT_EQ(runs(pool, 9), once(9)) << "after failures";
    }
}

TEST(WorkerPool, LetsFailuresOfInnerWorkThrough) {
    WorkerPool pool(3);
    for (int round = 0; round < 100; ++round) {
        std::atomic<int> failed = 0;
        const std::string failure = failureOf(pool, 6, [&](int outer) {
            const std::string inner = failureOf(pool, 4, [](int part) {
                if (part == 2) throw std::out_of_range("inner");
            });
            if (inner == "inner") ++failed;
            if (outer == 5) throw std::out_of_range(inner);
        });
        EXPECT_EQ(failure, "inner");
        EXPECT_EQ(failed, 6);  // the last one is begun last
    }
}

}  // namespace
}  // namespace vireo
