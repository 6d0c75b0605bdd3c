// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_FRAME_BUFFER_H
#define VIREO_HOST_PIXKIT_FRAME_BUFFER_H

#include "host/host_pointer.h"

/// A rectangle in pixels; right and bottom are excluded.
typedef struct FrameRect {
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
} FrameRect;

/// What a VPix handle points to. Rows are stored bottom-up: `pixels` addresses the bottom row of the
/// picture, and picture row y lies at memory row bounds.bottom - 1 - y.
typedef struct FrameBuffer {
    FrameRect bounds;
    int32_t rowBytes;  ///< From one row in memory to the next; may be negative.
    int32_t hostData;
    VIREO_POINTER(void) pixels;
} FrameBuffer;

#ifdef __cplusplus
static_assert(sizeof(FrameBuffer) == 32);
static_assert(offsetof(FrameBuffer, rowBytes) == 16);
static_assert(offsetof(FrameBuffer, pixels) == 24);
#endif

#endif
