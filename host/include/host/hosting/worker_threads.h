// SPDX-License-Identifier: MIT
// Threads that a host lends to its services for the time of a call. Filters start none and know of none.
#ifndef VIREO_HOST_HOSTING_WORKER_THREADS_H
#define VIREO_HOST_HOSTING_WORKER_THREADS_H

#include "host/host_export.h"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace hosting {

class WorkerThreads {
public:
    virtual ~WorkerThreads() = default;

    /// How many work at a time, the caller's among them; at least 1.
    virtual int count() const = 0;

    /// Runs work(0) to work(parts - 1), each once and in any order, and returns when all are done. What one
    /// of them throws is thrown here, and the rest is left out; nothing else is.
    virtual void run(int parts, const std::function<void(int)>& work) = 0;
};

/// Where part `i` of several begins, which are as near to equal as can be.
inline int partEdge(int length, int i, int parts) {
    return static_cast<int>(std::int64_t{length} * i / parts);
}

/// Into how many parts of at least `least` work of a length is shared: 1 without threads, else several for
/// each, so that one that is held up does not hold up all.
inline int partCount(const WorkerThreads* workers, int length, int least) {
    constexpr int partsPerThread = 8;
    if (workers == nullptr || workers->count() < 2) return 1;
    return std::clamp(length / least, 1, partsPerThread * workers->count());
}

/// While it lives, services that this thread calls may use the workers; null: none. Loans may be nested.
class VIREO_HOST_API WorkerLoan {
public:
    explicit WorkerLoan(WorkerThreads* workers);
    WorkerLoan(const WorkerLoan&) = delete;
    WorkerLoan& operator=(const WorkerLoan&) = delete;
    ~WorkerLoan();

private:
    WorkerThreads* before_;
};

/// What is lent to this thread; null where nothing is.
VIREO_HOST_API WorkerThreads* lentWorkers();

/// Work of a length in parts of at least `least`, for the threads that are lent to this one.
class LentParts {
public:
    LentParts(int length, int least)
        : workers_(lentWorkers()), length_(length), count_(partCount(workers_, length, least)) {}

    int count() const { return count_; }
    int begin(int part) const { return partEdge(length_, part, count_); }
    int end(int part) const { return begin(part + 1); }

    /// Calls work(part) for all parts, as WorkerThreads::run does; here where there is one.
    void run(const std::function<void(int)>& work) const {
        if (count_ == 1) return work(0);
        workers_->run(count_, work);
    }

private:
    WorkerThreads* workers_;
    int length_;
    int count_;
};

}  // namespace hosting

#endif
