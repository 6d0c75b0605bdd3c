// SPDX-License-Identifier: MIT
#include "tests/host/short_memory.h"

#include <cstdlib>
#include <new>

namespace {

bool memoryIsShort = false;

void* allocated(std::size_t size) { return memoryIsShort ? nullptr : std::malloc(size); }

}  // namespace

ShortMemory::ShortMemory() { memoryIsShort = true; }
ShortMemory::~ShortMemory() { memoryIsShort = false; }

void* operator new(std::size_t size) {
    void* memory = allocated(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

// Replaced too, since a sanitizer's own does not call the one above.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocated(size); }

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
