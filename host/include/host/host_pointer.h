// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HOST_POINTER_H
#define VIREO_HOST_HOST_POINTER_H

#ifdef __cplusplus

#include <cstddef>
#include <cstdint>

#pragma pack(push, 1)
/// A pointer inside a host record. It takes 8 bytes on every platform and may lie at any address, so that
/// 32-bit builds share the records of 64-bit ones.
template <class T>
struct HostPointer {
    uint64_t address = 0;

    HostPointer() = default;
    HostPointer(T* pointer) : address(reinterpret_cast<uintptr_t>(pointer)) {}
    operator T*() const { return get(); }
    T* operator->() const { return get(); }
    T* get() const { return reinterpret_cast<T*>(static_cast<uintptr_t>(address)); }
};
#pragma pack(pop)

#define VIREO_POINTER(type) HostPointer<type>

#else

#include <stddef.h>
#include <stdint.h>

/* C programs cast the address to and from the pointer's type, uintptr_t in between. */
#define VIREO_POINTER(type) uint64_t

#endif

#endif
