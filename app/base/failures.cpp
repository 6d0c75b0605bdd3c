// SPDX-License-Identifier: MIT
#include "app/base/failures.h"

#include "engine/error.h"

#include <cstdio>
#include <cstdlib>
#include <new>
#include <system_error>

#if defined(__GLIBC__)
#include <execinfo.h>
#endif

namespace vireo {
namespace {

constexpr char noMemory[] = "there is not enough memory";

std::terminate_handler otherEnd = nullptr;

void end() {
    try {
        if (std::current_exception() != nullptr) throw;
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "vireo: %s.\n", noMemory);
        std::_Exit(1);
    } catch (...) {
        // Is a fault of the program.
    }
    otherEnd();
}

}  // namespace

std::string sentenceOf(const std::exception& failure) {
    if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr) return noMemory;
    const auto* const system = dynamic_cast<const std::system_error*>(&failure);
    if (system != nullptr && system->code() == std::errc::resource_unavailable_try_again)
        return "another thread cannot be started: there is not enough memory, or there are too many threads";
    return failure.what();
}

int statusOf(const std::exception& failure) {
    const auto* const error = dynamic_cast<const Error*>(&failure);
    return error == nullptr ? 1 : error->status();
}

void endInWordsWithoutMemory() {
    otherEnd = std::set_terminate(end);
#if defined(__GLIBC__)
    // Ending a thread loads a library when it is first done, and aborts where there is no memory for it.
    void* frame = nullptr;
    backtrace(&frame, 1);
#endif
}

}  // namespace vireo
