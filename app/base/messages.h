// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_MESSAGES_H
#define VIREO_APP_BASE_MESSAGES_H

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

namespace vireo {

/// Notices, warnings and the progress of a render, on standard error. On a terminal the progress is one line
/// that is written over, elsewhere a line every few seconds. Any thread may call.
class Messages {
public:
    explicit Messages(bool quiet);
    Messages(const Messages&) = delete;
    Messages& operator=(const Messages&) = delete;
    ~Messages();  ///< Removes the progress line.

    /// Sentences without a full stop.
    void notice(const std::string& sentence);
    void warning(const std::string& sentence);

    /// `total` is 0 where unknown.
    void progress(std::int64_t frames, std::int64_t total);

private:
    using Clock = std::chrono::steady_clock;

    void line(const std::string& text);
    void clearProgress();

    std::mutex mutex_;
    const bool quiet_;
    const bool terminal_;
    const Clock::time_point start_ = Clock::now();
    Clock::time_point lastProgress_ = start_;
    bool progressShown_ = false;
};

/// "vireo: SENTENCE." on a line of standard error.
void printError(const std::string& sentence);

}  // namespace vireo

#endif
