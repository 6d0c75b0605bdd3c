// SPDX-License-Identifier: MIT
// Prints each job's time as a multiple of one memcpy of the same frame in the same run.
#include "bench/bench.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <random>
#include <vector>

namespace bench {
namespace {

const std::string memcpySubject = "memcpy";

std::string nameOf(const std::string& subject, const std::string& who, const FrameSize& size) {
    return subject + "|" + who + "|" + size.name;
}

/// Collects the medians and prints the table when all have run.
class RatioReporter final : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        benchmark::ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") {
                medians_[run.run_name.function_name] = run.GetAdjustedRealTime();
            }
        }
    }

    void Finalize() override {
        std::printf("\n| Job | Who |");
        for (const FrameSize& size : frameSizes) std::printf(" %s, × memcpy |", size.name);
        std::printf("\n|---|---|---|---|\n");
        // Peers stand below the filter whose job they do.
        std::stable_sort(jobs_.begin(), jobs_.end(),
                         [](const Job& a, const Job& b) { return rank(a) < rank(b); });
        for (const Job& job : jobs_) printRow(job);
    }

    static void announce(const std::string& subject, const std::string& who) {
        jobs_.push_back({subject, who});
    }

private:
    struct Job {
        std::string subject;
        std::string who;
    };

    static std::ptrdiff_t rank(const Job& job) {
        static const std::vector<Job> announced = jobs_;
        const auto sameSubject = [&](const Job& other) { return other.subject == job.subject; };
        return std::find_if(announced.begin(), announced.end(), sameSubject) - announced.begin();
    }

    void printRow(const Job& job) const {
        std::string cells;
        for (const FrameSize& size : frameSizes) {
            const auto time = medians_.find(nameOf(job.subject, job.who, size));
            const auto copy = medians_.find(nameOf(memcpySubject, "C library", size));
            if (time == medians_.end() || copy == medians_.end()) return;
            char cell[32];
            std::snprintf(cell, sizeof cell, " %.2f |", time->second / copy->second);
            cells += cell;
        }
        std::printf("| %s | %s |%s\n", job.subject.c_str(), job.who.c_str(), cells.c_str());
    }

    static inline std::vector<Job> jobs_;
    std::map<std::string, double> medians_;
};

}  // namespace

Frames::Frames(const FrameSize& frameSize) : size(frameSize) {
    constexpr std::size_t page = 4096;
    memory = std::make_unique<std::uint8_t[]>(2 * size.bytes() + 3 * page);
    const auto aligned = [](std::uint8_t* address) {
        return address + (page - reinterpret_cast<std::uintptr_t>(address) % page) % page;
    };
    source = aligned(memory.get());
    destination = aligned(source + size.bytes());

    std::minstd_rand noise(1);
    for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
            std::uint8_t* pixel = source + std::size_t{4} * static_cast<std::size_t>(y * size.width + x);
            pixel[0] = static_cast<std::uint8_t>(x * 255 / size.width ^ noise() % 16);
            pixel[1] = static_cast<std::uint8_t>(y * 255 / size.height ^ noise() % 16);
            pixel[2] = static_cast<std::uint8_t>((x + y) / 8 % 256);
            const int fromMiddle = std::max(std::abs(2 * x - size.width) * size.height / size.width,
                                            std::abs(2 * y - size.height));
            pixel[3] = fromMiddle < size.height * 3 / 4 ? 255 : 0;
        }
    }
    std::memset(destination, 1, size.bytes());
}

void add(const std::string& subject, const std::string& who, Setup setup) {
    RatioReporter::announce(subject, who);
    for (const FrameSize& size : frameSizes) {
        benchmark::RegisterBenchmark(nameOf(subject, who, size).c_str(),
                                     [setup, size](benchmark::State& state) {
                                         Frames frames(size);
                                         const auto job = setup(frames);
                                         // What is kept between frames is there from the third on.
                                         for (int i = 0; i < 3; ++i) job();
                                         for (auto _ : state) {
                                             job();
                                             benchmark::ClobberMemory();
                                         }
                                     })
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    }
}

void addFilters();
void addPixKit();
#if defined(VIREO_BENCH_OPENCV)
void addOpenCv();
#endif
#if defined(VIREO_BENCH_LIBYUV)
void addLibyuv();
#endif
#if defined(VIREO_BENCH_FREI0R)
void addFrei0r();
#endif

}  // namespace bench

int main(int argumentCount, char** arguments) {
    std::vector<char*> all(arguments, arguments + argumentCount);
    // Interleaved repetitions, so that a machine whose speed drifts treats all alike.
    char repetitions[] = "--benchmark_repetitions=5";
    char interleaving[] = "--benchmark_enable_random_interleaving=true";
    char minimumTime[] = "--benchmark_min_time=0.1";
    char aggregates[] = "--benchmark_report_aggregates_only=true";
    all.insert(all.begin() + 1, {repetitions, interleaving, minimumTime, aggregates});
    int count = static_cast<int>(all.size());
    benchmark::Initialize(&count, all.data());
    if (benchmark::ReportUnrecognizedArguments(count, all.data())) return 2;

    bench::add(bench::memcpySubject, "C library", [](bench::Frames& frames) {
        return [&frames] { std::memcpy(frames.destination, frames.source, frames.size.bytes()); };
    });
    bench::addFilters();
    bench::addPixKit();
#if defined(VIREO_BENCH_OPENCV)
    bench::addOpenCv();
#endif
#if defined(VIREO_BENCH_LIBYUV)
    bench::addLibyuv();
#endif
#if defined(VIREO_BENCH_FREI0R)
    bench::addFrei0r();
#endif
    bench::RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
}
