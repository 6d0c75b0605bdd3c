// SPDX-License-Identifier: MIT
// Threads that a host lends to its services for the time of a call. Filters start none and know of none.
#ifndef VIREO_HOST_HOSTING_WORKER_THREADS_H
#define VIREO_HOST_HOSTING_WORKER_THREADS_H

#include "host/host_export.h"

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

}  // namespace hosting

#endif
