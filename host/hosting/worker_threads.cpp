// SPDX-License-Identifier: MIT
#include "host/hosting/worker_threads.h"

#include <utility>

namespace hosting {
namespace {

#if defined(__EMSCRIPTEN__)
WorkerThreads* lent = nullptr;  // in a program of one thread
#else
thread_local WorkerThreads* lent = nullptr;
#endif

}  // namespace

WorkerLoan::WorkerLoan(WorkerThreads* workers) : before_(std::exchange(lent, workers)) {}

WorkerLoan::~WorkerLoan() { lent = before_; }

WorkerThreads* lentWorkers() { return lent; }

}  // namespace hosting
