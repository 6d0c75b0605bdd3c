// SPDX-License-Identifier: MIT
// Where inputs are only replayed, to count what they reach.
#include <cstddef>

#include <sanitizer/asan_interface.h>

void __asan_poison_memory_region(const volatile void*, std::size_t) {}
void __asan_unpoison_memory_region(const volatile void*, std::size_t) {}
