// SPDX-License-Identifier: MIT
#include "filters/lens/sampler.h"

#include "host/utilkit/utilkit.h"

SoftenedCopy::SoftenedCopy(FrameBuffer* source) {
    FrameRect bounds;
    vpixGetBounds(source, &bounds);
    handle_ = vpixNew(&bounds);
    if (handle_ == nullptr) return;
    vpixCopy(source, handle_, &bounds, &bounds, VPixCopyReplace);
    SmoothAlpha(vpixGetPixels(handle_), vpixGetRowbytes(handle_), bounds.right - bounds.left,
                bounds.bottom - bounds.top);
}

SoftenedCopy::~SoftenedCopy() { vpixDispose(handle_); }
