// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_UTILKIT_WINDOW_PLACE_H
#define VIREO_HOST_UTILKIT_WINDOW_PLACE_H

#include "host/pixkit/frame_buffer.h"

#include <algorithm>

namespace UtilKit {

struct Position {
    std::int32_t x;
    std::int32_t y;
};

/// Where the top left corner of a window of this size goes over a rectangle: centred across; down, the gap
/// above half the gap below; inside the work area, whose top left corner wins where the window is larger.
constexpr Position higherPlace(std::int32_t width, std::int32_t height, const FrameRect& over,
                               const FrameRect& workArea) {
    const std::int32_t x = over.left + (over.right - over.left - width) / 2;
    const std::int32_t y = over.top + (over.bottom - over.top - height) / 3;
    return {std::max(std::min(x, workArea.right - width), workArea.left),
            std::max(std::min(y, workArea.bottom - height), workArea.top)};
}

}  // namespace UtilKit

#endif
