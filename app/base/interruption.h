// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_INTERRUPTION_H
#define VIREO_APP_BASE_INTERRUPTION_H

#include <atomic>

namespace vireo {

/// Turns SIGINT and SIGTERM (on Windows the console's events) into a request that renders look at, for as
/// long as one of these lives. Writing to a closed pipe or past a file-size limit becomes an error of the
/// write instead of the program's end. Any thread may make one; those within another one's life change
/// nothing.
class InterruptionGuard {
public:
    InterruptionGuard();
    InterruptionGuard(const InterruptionGuard&) = delete;
    InterruptionGuard& operator=(const InterruptionGuard&) = delete;
    ~InterruptionGuard();
};

/// Throws Error with the status of the signal once one came.
void throwIfInterrupted();

/// Tells everything that waits for a file or for another thread to give up.
class StopRequest {
public:
    void request() { requested_ = true; }
    /// Also true once a signal came.
    bool requested() const;

private:
    std::atomic<bool> requested_ = false;
};

}  // namespace vireo

#endif
