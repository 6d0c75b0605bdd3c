// SPDX-License-Identifier: MIT
#include "host/heapkit/heapkit.h"

#include <cstring>

void PackHandle(void** handle, std::int32_t* cursor, const void* field, std::int32_t size) {
    std::memcpy(static_cast<char*>(*handle) + *cursor, field, static_cast<std::size_t>(size));
    *cursor += size;
}

void UnpackHandle(void** handle, std::int32_t* cursor, void* field, std::int32_t size) {
    std::memcpy(field, static_cast<const char*>(*handle) + *cursor, static_cast<std::size_t>(size));
    *cursor += size;
}

void VrBlockMove(const void* source, void* destination, std::int32_t size) {
    std::memmove(destination, source, static_cast<std::size_t>(size));
}
