// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_FUZZ_REQUIRE_H
#define VIREO_TESTS_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>
#include <optional>

/// Ends the program, which the fuzzer takes for a fault, where the condition does not hold.
#define REQUIRE(condition)                                       \
    do {                                                         \
        if (!(condition)) failRequirement(#condition, __LINE__); \
    } while (false)

[[noreturn]] inline void failRequirement(const char* condition, int line) {
    std::fprintf(stderr, "not so, line %d: %s\n", line, condition);
    std::abort();
}

/// What comes of reading, or nothing where there is a sentence about what is wrong.
template <class Refusal, class Read>
auto readOrRefused(Read&& read) -> std::optional<decltype(read())> {
    try {
        return read();
    } catch (const Refusal& refusal) {
        REQUIRE(*refusal.what() != '\0');
        return std::nullopt;
    }
}

#endif
