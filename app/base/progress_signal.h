// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_PROGRESS_SIGNAL_H
#define VIREO_APP_BASE_PROGRESS_SIGNAL_H

#include <functional>
#include <thread>

namespace vireo {

/// Makes SIGUSR1 a question and not the program's end. Windows has no such signal.
void takeProgressSignals();

/// Answers each SIGUSR1 for as long as it lives, on a thread of its own. Those within another one's life
/// leave the answer to it.
class ProgressSignal {
public:
    explicit ProgressSignal(std::function<void()> answer);
    ProgressSignal(const ProgressSignal&) = delete;
    ProgressSignal& operator=(const ProgressSignal&) = delete;
    ~ProgressSignal();

private:
    std::function<void()> answer_;
    std::jthread thread_;  ///< None where another one answers.
};

}  // namespace vireo

#endif
