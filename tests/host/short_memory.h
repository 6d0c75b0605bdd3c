// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_HOST_SHORT_MEMORY_H
#define VIREO_TESTS_HOST_SHORT_MEMORY_H

/// While one lives, operator new throws std::bad_alloc or, where it may not throw, gives null.
struct ShortMemory {
    ShortMemory();
    ~ShortMemory();
    ShortMemory(const ShortMemory&) = delete;
    ShortMemory& operator=(const ShortMemory&) = delete;
};

#endif
