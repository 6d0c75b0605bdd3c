// SPDX-License-Identifier: MIT
// Platforms without windows have nothing to draw on.
#include "host/pixkit/pixkit.h"

void vpixToScreen(FrameBuffer*, void*, const FrameRect*) {}
