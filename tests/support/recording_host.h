// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_SUPPORT_RECORDING_HOST_H
#define VIREO_TESTS_SUPPORT_RECORDING_HOST_H

#include "host/vrm/filter_invocation.h"

#include <string>

/// A host table over the reference host's that writes down what filters ask of its memory functions. One at a
/// time may live.
class RecordingHost {
public:
    RecordingHost();
    RecordingHost(const RecordingHost&) = delete;
    RecordingHost& operator=(const RecordingHost&) = delete;
    ~RecordingHost();

    const HostCallbacks* callbacks() const { return &callbacks_; }

    /// The sizes of newHandle and, with "c" before them, of newContextHandle, in order: "32 c64 2".
    std::string allocations() const { return allocations_; }
    /// Handles that were made and not disposed.
    int liveHandles() const { return liveHandles_; }

private:
    static MemoryHandle newHandle(std::size_t size);
    static MemoryHandle newContextHandle(std::size_t size);
    static void disposeHandle(MemoryHandle handle);
    MemoryHandle allocate(const char* prefix, std::size_t size);

    MemoryFunctions memory_;
    HostCallbacks callbacks_;
    std::string allocations_;
    int liveHandles_ = 0;
};

#endif
