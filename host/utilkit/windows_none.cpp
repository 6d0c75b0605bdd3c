// SPDX-License-Identifier: MIT
// Platforms without windows have nothing to move and no dialog to show.
#include "host/utilkit/utilkit.h"

void center_wnd_higher(void*, void*) {}

std::uint32_t vrColorPicker(void*, std::uint32_t color) { return color; }
