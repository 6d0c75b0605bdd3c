// SPDX-License-Identifier: MIT
#include "tests/host/short_memory.h"

#include <cstdlib>
#include <new>

namespace {

bool memoryIsShort = false;

}  // namespace

ShortMemory::ShortMemory() { memoryIsShort = true; }
ShortMemory::~ShortMemory() { memoryIsShort = false; }

void* operator new(std::size_t size) {
    void* memory = memoryIsShort ? nullptr : std::malloc(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
