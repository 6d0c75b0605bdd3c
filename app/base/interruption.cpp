// SPDX-License-Identifier: MIT
#include "app/base/interruption.h"

#include "engine/error.h"

#include <csignal>
#include <iterator>
#include <mutex>

#ifdef _WIN32
#include "host/win32.h"
#endif

namespace vireo {
namespace {

std::atomic<int> receivedSignal = 0;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler writes it");

#ifdef _WIN32

BOOL WINAPI noteEvent(DWORD event) {
    receivedSignal = event == CTRL_C_EVENT ? SIGINT : SIGTERM;
    // The program ends when this returns: its main thread tidies up and ends it before.
    const bool endsAtOnce = event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT;
    if (endsAtOnce) Sleep(INFINITE);
    return TRUE;
}

void takeSignals() { SetConsoleCtrlHandler(noteEvent, TRUE); }
void leaveSignals() { SetConsoleCtrlHandler(noteEvent, FALSE); }

#else

extern "C" void noteSignal(int number) { receivedSignal = number; }

struct Handling {
    int signal;
    void (*handler)(int);
};

const Handling handlings[] = {
    {SIGINT, noteSignal}, {SIGTERM, noteSignal}, {SIGHUP, noteSignal}, {SIGPIPE, SIG_IGN}, {SIGXFSZ, SIG_IGN},
};

void (*previousHandlers[std::size(handlings)])(int);

void takeSignals() {
    for (std::size_t i = 0; i < std::size(handlings); ++i) {
        void (*const before)(int) = std::signal(handlings[i].signal, handlings[i].handler);
        // What the caller ignores (as nohup does with SIGHUP) stays ignored.
        if (before == SIG_IGN) std::signal(handlings[i].signal, SIG_IGN);
        previousHandlers[i] = before;
    }
}

void leaveSignals() {
    for (std::size_t i = 0; i < std::size(handlings); ++i)
        std::signal(handlings[i].signal, previousHandlers[i]);
}

#endif

std::mutex guardMutex;
int guards = 0;

}  // namespace

InterruptionGuard::InterruptionGuard() {
    const std::lock_guard lock(guardMutex);
    if (guards++ > 0) return;
    receivedSignal = 0;
    takeSignals();
}

InterruptionGuard::~InterruptionGuard() {
    const std::lock_guard lock(guardMutex);
    if (--guards == 0) leaveSignals();
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
