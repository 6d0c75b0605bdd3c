// SPDX-License-Identifier: MIT
#include "host/vrm/suites.h"
#include "tests/host/workers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace {

struct Ranges {
    std::mutex mutex;
    std::vector<std::pair<std::int32_t, std::int32_t>> done;
};

void note(void* task, std::int32_t begin, std::int32_t end) {
    auto& ranges = *static_cast<Ranges*>(task);
    const std::lock_guard lock(ranges.mutex);
    ranges.done.emplace_back(begin, end);
}

TEST(TaskSuite, CoversALengthOnceInRangesLongEnough) {
    const void* suite = nullptr;
    ASSERT_EQ(vrmAcquireSuite(VIREO_TASK_SUITE, 1, &suite), 0);
    Workers workers(3);
    const hosting::WorkerLoan loan(&workers);
    for (const std::int32_t length : {1, 7, 64, 1080})
        for (const std::int32_t least : {-1, 0, 1, 5, 32, 2000}) {
            SCOPED_TRACE(testing::Message() << length << " in ranges of " << least);
            Ranges ranges;
            EXPECT_EQ(static_cast<const TaskSuite*>(suite)->share.get()(note, &ranges, length, least), 0);
            std::sort(ranges.done.begin(), ranges.done.end());
            std::int32_t next = 0;
            for (const auto& [begin, end] : ranges.done) {
                EXPECT_EQ(begin, next);
                EXPECT_TRUE(end - begin >= std::max(least, 1) || ranges.done.size() == 1);
                next = end;
            }
            EXPECT_EQ(next, length);
            EXPECT_EQ(ranges.done.size() > 1, length >= 2 * std::max(least, 1));
        }
}

}  // namespace
