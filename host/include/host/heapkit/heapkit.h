// SPDX-License-Identifier: MIT
// HeapKit: the host's memory library. Settings records are packed into handles field by field, little-endian
// and without padding.
#ifndef VIREO_HOST_HEAPKIT_HEAPKIT_H
#define VIREO_HOST_HEAPKIT_HEAPKIT_H

#include "host/host_export.h"
#include "host/host_pointer.h"

/// Copies `size` bytes of `field` into the handle's bytes at `*cursor` and moves the cursor behind them.
VIREO_HOST_C void PackHandle(void** handle, int32_t* cursor, const void* field, int32_t size);

/// Copies `size` bytes at `*cursor` out of the handle's bytes and moves the cursor behind them.
VIREO_HOST_C void UnpackHandle(void** handle, int32_t* cursor, void* field, int32_t size);

/// Copies `size` bytes; the blocks may overlap.
VIREO_HOST_C void VrBlockMove(const void* source, void* destination, int32_t size);

#endif
