// SPDX-License-Identifier: MIT
// <windows.h> without its function FrameRect, since the rectangle of the pixel buffers has that name.
#ifndef VIREO_HOST_WIN32_H
#define VIREO_HOST_WIN32_H

#define FrameRect Win32FrameRect
#include <windows.h>
#undef FrameRect

#endif
