// SPDX-License-Identifier: MIT
// UtilKit: the host's media and window utilities.
#ifndef VIREO_HOST_UTILKIT_UTILKIT_H
#define VIREO_HOST_UTILKIT_UTILKIT_H

#include "host/host_export.h"
#include "host/host_pointer.h"

/// 16.16 product, truncated toward zero. A result outside 32 bits gives 0x7FFFFFFF or -0x7FFFFFFF by sign.
VIREO_HOST_C int32_t FixedMul(int32_t a, int32_t b);

/// 16.16 quotient, truncated toward zero. A result outside 32 bits, or b = 0, gives 0x7FFFFFFF or -0x7FFFFFFF
/// by sign; 0 / 0 gives 0.
VIREO_HOST_C int32_t FixedDiv(int32_t a, int32_t b);

/// Softens the alpha of 4-byte pixels in place: 3 x 3 weights 1 2 1 / 2 4 2 / 1 2 1, rounded half up, edge
/// pixels repeating.
VIREO_HOST_C void SmoothAlpha(void* pixels, int32_t rowBytes, int32_t width, int32_t height);

/// Moves a window over another (null: over the work area): centred across; down, the gap above is half the
/// gap below; kept inside the work area. Does nothing where there are no windows.
VIREO_HOST_C void center_wnd_higher(void* window, void* over);

/// Lets the user choose a colour, 0x00BBGGRR. Returns the chosen one, or `color` after Cancel.
VIREO_HOST_C uint32_t vrColorPicker(void* owner, uint32_t color);

#endif
