// SPDX-License-Identifier: MIT
// What programs share that print tables: jobs in turn and the best round of each, and pictures to work on.
#ifndef VIREO_BENCH_ROUNDS_H
#define VIREO_BENCH_ROUNDS_H

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <vector>

namespace bench {

using Job = std::function<void()>;

/// Milliseconds of each job's best round. Each follows itself, since what ran before leaves its own lines in
/// the cache, to be written back by the next.
inline std::vector<double> best(int rounds, const std::vector<Job>& jobs) {
    std::vector<double> times(jobs.size(), std::numeric_limits<double>::infinity());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < jobs.size(); ++i) {
            jobs[i]();
            const auto begin = std::chrono::steady_clock::now();
            jobs[i]();
            const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
            times[i] = std::min(times[i], time.count());
        }
    }
    return times;
}

struct FreeMemory {
    void operator()(std::uint8_t* memory) const { std::free(memory); }
};
using Memory = std::unique_ptr<std::uint8_t, FreeMemory>;

/// Bytes of a smooth picture with noise.
inline Memory painted(std::size_t bytes) {
    Memory memory(static_cast<std::uint8_t*>(std::aligned_alloc(4096, (bytes + 4095) / 4096 * 4096)));
    std::minstd_rand noise(1);
    for (std::size_t i = 0; i < bytes; ++i) {
        memory.get()[i] = static_cast<std::uint8_t>(i % 4 == 3 ? 200 : i / 60000 + (noise() >> 12) % 32);
    }
    return memory;
}

}  // namespace bench

#endif
