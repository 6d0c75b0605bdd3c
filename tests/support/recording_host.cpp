// SPDX-License-Identifier: MIT
#include "tests/support/recording_host.h"

#include "host/heapkit/memory_handles.h"
#include "host/vireo_host.h"

namespace {

// The host's functions carry no context of their own.
RecordingHost* current = nullptr;

}  // namespace

RecordingHost::RecordingHost()
    : memory_(*vireoHostCallbacks()->memory.get()), callbacks_(*vireoHostCallbacks()) {
    memory_.newHandle = newHandle;
    memory_.newContextHandle = newContextHandle;
    memory_.disposeHandle = disposeHandle;
    callbacks_.memory = &memory_;
    current = this;
}

RecordingHost::~RecordingHost() { current = nullptr; }

MemoryHandle RecordingHost::newHandle(std::size_t size) { return current->allocate("", size); }
MemoryHandle RecordingHost::newContextHandle(std::size_t size) { return current->allocate("c", size); }

MemoryHandle RecordingHost::allocate(const char* prefix, std::size_t size) {
    if (!allocations_.empty()) allocations_ += ' ';
    allocations_ += prefix + std::to_string(size);
    ++liveHandles_;
    return HeapKit::newHandle(size);
}

void RecordingHost::disposeHandle(MemoryHandle handle) {
    if (handle != nullptr) --current->liveHandles_;
    HeapKit::disposeHandle(handle);
}
