// SPDX-License-Identifier: MIT
#include "app/base/progress_signal.h"

#if !defined(_WIN32)
#include <semaphore.h>
#include <atomic>
#include <cerrno>
#include <csignal>
#endif

namespace vireo {

#if defined(_WIN32)

void takeProgressSignals() {}
ProgressSignal::ProgressSignal(std::function<void()>) {}
ProgressSignal::~ProgressSignal() = default;

#else

namespace {

/// What a handler may touch and a thread can wait for.
sem_t questions;

std::atomic<bool> isAnswered = false;

extern "C" void noteQuestion(int) {
    const int kept = errno;
    sem_post(&questions);
    errno = kept;
}

bool takeQuestions() {
    sem_init(&questions, 0, 0);
    struct sigaction before {};
    sigaction(SIGUSR1, nullptr, &before);
    if (before.sa_handler == SIG_IGN) return true;
    struct sigaction action {};
    action.sa_handler = noteQuestion;
    action.sa_flags = SA_RESTART;
    sigaction(SIGUSR1, &action, nullptr);
    return true;
}

}  // namespace

void takeProgressSignals() { [[maybe_unused]] static const bool once = takeQuestions(); }

ProgressSignal::ProgressSignal(std::function<void()> answer) : answer_(std::move(answer)) {
    takeProgressSignals();
    if (isAnswered.exchange(true)) return;
    while (sem_trywait(&questions) == 0) {
    }
    thread_ = std::jthread([this](const std::stop_token& stop) {
        while (true) {
            while (sem_wait(&questions) != 0) {
            }
            if (stop.stop_requested()) return;
            answer_();
        }
    });
}

ProgressSignal::~ProgressSignal() {
    if (!thread_.joinable()) return;
    thread_.request_stop();
    sem_post(&questions);
    thread_.join();
    isAnswered = false;
}

#endif

}  // namespace vireo
