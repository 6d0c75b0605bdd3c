// SPDX-License-Identifier: MIT
#include "app/base/interruption.h"

#include "engine/error.h"

#include <csignal>
#include <iterator>
#include <mutex>

namespace vireo {
namespace {

std::atomic<int> receivedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler writes it");

extern "C" void noteSignal(int number) { receivedSignal = number; }

struct Handling {
    int signal;
    void (*handler)(int);
};

const Handling handlings[] = {
    {SIGINT, noteSignal}, {SIGTERM, noteSignal},
#ifndef _WIN32
    {SIGHUP, noteSignal}, {SIGPIPE, SIG_IGN},    {SIGXFSZ, SIG_IGN},
#endif
};

std::mutex guardMutex;
int guards = 0;
void (*previousHandlers[std::size(handlings)])(int);

}  // namespace

InterruptionGuard::InterruptionGuard() {
    const std::lock_guard lock(guardMutex);
    if (guards++ > 0) return;
    receivedSignal = 0;
    for (std::size_t i = 0; i < std::size(handlings); ++i) {
        void (*const before)(int) = std::signal(handlings[i].signal, handlings[i].handler);
        // What the caller ignores (as nohup does with SIGHUP) stays ignored.
        if (before == SIG_IGN) std::signal(handlings[i].signal, SIG_IGN);
        previousHandlers[i] = before;
    }
}

InterruptionGuard::~InterruptionGuard() {
    const std::lock_guard lock(guardMutex);
    if (--guards > 0) return;
    for (std::size_t i = 0; i < std::size(handlings); ++i)
        std::signal(handlings[i].signal, previousHandlers[i]);
}

void throwIfInterrupted() {
    constexpr int signalStatus = 128;  // as shells count
    switch (receivedSignal) {
        case 0: return;
        case SIGINT: throw Error("interrupted; nothing was written", signalStatus + SIGINT);
        default: throw Error("terminated; nothing was written", signalStatus + receivedSignal);
    }
}

bool StopRequest::requested() const { return requested_ || receivedSignal != 0; }

}  // namespace vireo
