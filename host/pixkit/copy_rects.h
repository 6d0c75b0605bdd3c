// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_COPY_RECTS_H
#define VIREO_HOST_PIXKIT_COPY_RECTS_H

#include "host/pixkit/frame_buffer.h"

#include <cstdint>

namespace PixKit {

/// Copies each rectangle onto the one of the same index, in this order and as vpixCopy does. Where nobody
/// sees the order, the threads that are lent to the caller share the copies.
void copyRects(FrameBuffer* source, FrameBuffer* destination, const FrameRect* sourceRects,
               const FrameRect* destinationRects, std::int32_t count, std::uint32_t mode);

}  // namespace PixKit

#endif
