// SPDX-License-Identifier: MIT
#include "engine/chain/worker_pool.h"
#include "tests/engine/support/gathering.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
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

std::string failureOf(WorkerPool& pool, int parts, const std::function<void(int)>& work) {
    try {
        pool.run(parts, work);
        return {};
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

class WorkerPools : public testing::TestWithParam<int> {
protected:
    WorkerPool pool{GetParam()};
};

TEST_P(WorkerPools, RunEveryPartOnce) {
    EXPECT_EQ(pool.count(), GetParam());
    for (const int parts : {-1, 0, 1, 2, 3, 7, 8, 9, 100, 1000}) EXPECT_EQ(runs(pool, parts), once(parts));
}

TEST_P(WorkerPools, WorkOnAsManyThreadsAsTheySay) {
    for (int parts = 1; parts <= GetParam(); ++parts) {
        test::Gathering all(parts);  // without so many threads the parts wait for ever
        pool.run(parts, [&](int) { all.join(); });
    }
}

TEST_P(WorkerPools, MayBeUsedFromWithinTheirWork) {
    for (int round = 0; round < 20; ++round) {
        std::vector<std::vector<int>> counts(20);
        std::atomic<int> failures = 0;
        pool.run(5, [&](std::size_t outer) {
            pool.run(4, [&](std::size_t inner) { counts[4 * outer + inner] = runs(pool, 3); });
            const std::string failure = failureOf(pool, 4, [](int part) {
                if (part == 2) throw std::out_of_range("inner");
            });
            if (failure == "inner") ++failures;
        });
        ASSERT_EQ(counts, std::vector(20, once(3)));
        ASSERT_EQ(failures, 5);
    }
}

TEST_P(WorkerPools, MayBeUsedByManyThreads) {
    std::atomic<int> wrong = 0;
    std::vector<std::thread> callers;
    for (int caller = 0; caller < 5; ++caller) {
        callers.emplace_back([&, caller] {
            for (int round = 0; round < 100; ++round) {
                const int parts = 1 + (7 * caller + round) % 13;
                if (runs(pool, parts) != once(parts)) ++wrong;
                const std::string due = round % 3 == caller % 3 ? std::to_string(caller) : "";
                const std::string failure = failureOf(pool, parts, [&](int) {
                    if (!due.empty()) throw std::runtime_error(due);
                });
                if (failure != due) ++wrong;
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(wrong, 0);
}

TEST_P(WorkerPools, ThrowWhatAPartThrowsAndLeaveTheRestOut) {
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
    const auto fail = [&](int) {
        ++begun;
        throw std::runtime_error("each");
    };
    EXPECT_EQ(failureOf(pool, 100000, fail), "each");
    EXPECT_LE(begun, GetParam());
    EXPECT_EQ(runs(pool, 9), once(9)) << "after failures";
}

INSTANTIATE_TEST_SUITE_P(Threads, WorkerPools, testing::Values(1, 2, 3, 8));

}  // namespace
}  // namespace vireo
