// SPDX-License-Identifier: MIT
// PixKit: the host's pixel buffers. A VPix handle is a pointer to a FrameBuffer; every function takes any
// FrameBuffer, also one that its caller laid out. Rectangles are in picture coordinates, y down from the top.
#ifndef VIREO_HOST_PIXKIT_PIXKIT_H
#define VIREO_HOST_PIXKIT_PIXKIT_H

#include "host/host_export.h"
#include "host/pixkit/frame_buffer.h"

/// Mode words of vpixCopy. Any word without VPixCopyBlend replaces.
enum VPixCopyMode {
    VPixCopyReplace = 0,
    VPixCopyReplaceColumns = 0x4000,
    VPixCopyBlend = 0x8000  ///< The low byte is the source's weight, of 255.
};

VIREO_HOST_C void vpixGetBounds(FrameBuffer* handle, FrameRect* bounds);
VIREO_HOST_C int32_t vpixGetRowbytes(FrameBuffer* handle);
VIREO_HOST_C void* vpixGetPixels(FrameBuffer* handle);

/// The pixel at picture position (x, y), 0 outside the bounds.
VIREO_HOST_C uint32_t vpixGetPixel(FrameBuffer* handle, int32_t x, int32_t y);

/// Copies a rectangle onto another. Where the sizes differ an axis that shrinks takes the mean of the span
/// that a pixel covers and one that grows interpolates linearly between pixel centres. Empty or inverted
/// rectangles copy nothing, what lies outside a buffer is neither read nor written, and overlap behaves as if
/// the source had been copied aside first. Samples are bytes, 16-bit words or floats as the formats say;
/// buffers whose pixels differ in width copy nothing.
VIREO_HOST_C void vpixCopy(FrameBuffer* source, FrameBuffer* destination, const FrameRect* sourceRect,
                           const FrameRect* destinationRect, uint32_t mode);

/// A zeroed "bgra" buffer with rows aligned to 64 bytes; null for an empty or overflowing rectangle or
/// without memory. The caller owns it and releases it with vpixDispose.
VIREO_HOST_C FrameBuffer* vpixNew(const FrameRect* bounds);
VIREO_HOST_C void vpixDispose(FrameBuffer* handle);

/// Writes the word as it is, clipped to the bounds; over and over where a pixel has more than 4 bytes.
VIREO_HOST_C void vpixFillRect(FrameBuffer* handle, const FrameRect* rect, uint32_t color);

VIREO_HOST_C void vpixLockPixels(FrameBuffer* handle, void** pixels);
VIREO_HOST_C void vpixUnlockPixels(FrameBuffer* handle);

/// Draws the whole buffer into `target` of a window's device context, scaled as vpixCopy scales, alpha
/// ignored. Does nothing where there are no windows.
VIREO_HOST_C void vpixToScreen(FrameBuffer* handle, void* deviceContext, const FrameRect* target);

#endif
