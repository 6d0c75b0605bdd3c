// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HEAPKIT_MEMORY_HANDLES_H
#define VIREO_HOST_HEAPKIT_MEMORY_HANDLES_H

#include "host/host_export.h"

#include <cstddef>

namespace HeapKit {

/// A handle to `size` zeroed bytes, or null without memory. Owned by the caller until disposeHandle.
VIREO_HOST_API void** newHandle(std::size_t size);

/// Does nothing with null.
VIREO_HOST_API void disposeHandle(void** handle);

/// How many bytes a handle of newHandle holds.
VIREO_HOST_API std::size_t handleSize(void** handle);

}  // namespace HeapKit

#endif
