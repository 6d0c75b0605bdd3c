// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_FUZZ_REQUIRE_H
#define VIREO_TESTS_FUZZ_REQUIRE_H

#include <cstdio>
#include <cstdlib>

/// Ends the program, which the fuzzer takes for a fault, where the condition does not hold.
#define REQUIRE(condition)                                       \
    do {                                                         \
        if (!(condition)) failRequirement(#condition, __LINE__); \
    } while (false)

[[noreturn]] inline void failRequirement(const char* condition, int line) {
    std::fprintf(stderr, "not so, line %d: %s\n", line, condition);
    std::abort();
}

#endif
