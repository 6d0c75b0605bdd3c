// SPDX-License-Identifier: MIT
// Settings records in the host's memory handles.
#ifndef VIREO_FRAMEWORK_SETTINGS_H
#define VIREO_FRAMEWORK_SETTINGS_H

#include "host/heapkit/heapkit.h"
#include "host/vrm/filter_invocation.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

/// A settings record with a member `template <class Visit> void fields(Visit&& visit)`, which calls visit
/// with each field in the order of storage, is packed field by field; any other is copied as it lies in
/// memory.
template <class Settings>
concept PackedSettings = requires(Settings& settings) {
    settings.fields([](auto&) {});
};

template <class Settings>
void readSettings(MemoryHandle handle, Settings& settings) {
    if constexpr (PackedSettings<Settings>) {
        std::int32_t cursor = 0;
        settings.fields([&](auto& field) { UnpackHandle(handle, &cursor, &field, sizeof field); });
    } else {
        static_assert(std::is_trivially_copyable_v<Settings>);
        std::memcpy(&settings, *handle, sizeof settings);
    }
}

template <class Settings>
void writeSettings(MemoryHandle handle, Settings settings) {
    if constexpr (PackedSettings<Settings>) {
        std::int32_t cursor = 0;
        settings.fields([&](auto& field) { PackHandle(handle, &cursor, &field, sizeof field); });
    } else {
        static_assert(std::is_trivially_copyable_v<Settings>);
        std::memcpy(*handle, &settings, sizeof settings);
    }
}

/// The stored settings, or `otherwise` where the invocation has none.
template <class Settings>
Settings settingsOr(const FilterInvocation& invocation, const Settings& otherwise) {
    Settings settings = otherwise;
    if (invocation.settingsHandle != nullptr) readSettings(invocation.settingsHandle, settings);
    return settings;
}

/// A handle of the host's, released at the end of its scope.
class WorkRecord {
public:
    WorkRecord(const FilterInvocation& invocation, NewHandleFunction* allocate, std::size_t size)
        : memory_(invocation.hostCallbacks->memory), handle_(allocate(size)) {}
    WorkRecord(const WorkRecord&) = delete;
    WorkRecord& operator=(const WorkRecord&) = delete;
    ~WorkRecord() {
        if (handle_ != nullptr) memory_->disposeHandle.get()(handle_);
    }

    explicit operator bool() const { return handle_ != nullptr; }
    MemoryHandle get() const { return handle_; }

    /// Leaves the release to somebody else.
    MemoryHandle release() {
        const MemoryHandle handle = handle_;
        handle_ = nullptr;
        return handle;
    }

private:
    const MemoryFunctions* memory_;
    MemoryHandle handle_;
};

/// Makes sure that the settings handle exists, `size` bytes where it is created. False without memory.
inline bool ensureSettingsHandle(FilterInvocation& invocation, std::size_t size) {
    if (invocation.settingsHandle == nullptr) {
        invocation.settingsHandle = invocation.hostCallbacks->memory->newHandle.get()(size);
    }
    return invocation.settingsHandle != nullptr;
}

#endif
