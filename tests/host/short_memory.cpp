// SPDX-License-Identifier: MIT
#include "tests/host/short_memory.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace {

bool memoryIsShort = false;
CountedMemory* counted = nullptr;

void* allocated(std::size_t size) noexcept {
    if (memoryIsShort || CountedMemory::nextFails()) return nullptr;
    void* const memory = std::malloc(size);
    if (memory != nullptr) CountedMemory::change(1);
    return memory;
}

void* allocatedOrThrow(std::size_t size) {
    void* const memory = allocated(size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void release(void* memory) noexcept {
    if (memory != nullptr) CountedMemory::change(-1);
    std::free(memory);
}

}  // namespace

ShortMemory::ShortMemory() { memoryIsShort = true; }
ShortMemory::~ShortMemory() { memoryIsShort = false; }

CountedMemory::CountedMemory(int failing) : failing_(failing) { counted = this; }
CountedMemory::~CountedMemory() { counted = nullptr; }

CountedMemory::Pause::Pause() : paused_(std::exchange(counted, nullptr)) {}
CountedMemory::Pause::~Pause() { counted = paused_; }

bool CountedMemory::nextFails() { return counted != nullptr && ++counted->allocations_ == counted->failing_; }

void CountedMemory::change(int live) {
    if (counted != nullptr) counted->live_ += live;
}

// Every form, since a sanitizer's own do not call each other.
void* operator new(std::size_t size) { return allocatedOrThrow(size); }
void* operator new[](std::size_t size) { return allocatedOrThrow(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocated(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocated(size); }

void operator delete(void* memory) noexcept { release(memory); }
void operator delete[](void* memory) noexcept { release(memory); }
void operator delete(void* memory, std::size_t) noexcept { release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { release(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { release(memory); }
void operator delete[](void* memory, const std::nothrow_t&) noexcept { release(memory); }
