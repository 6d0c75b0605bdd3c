// SPDX-License-Identifier: MIT
#include "host/pixkit/pixel_view.h"
#include "host/pixkit/pixkit.h"

#include <cstring>

std::uint32_t vpixGetPixel(FrameBuffer* handle, std::int32_t x, std::int32_t y) {
    const PixKit::PixelView view = PixKit::viewOf(handle);
    if (x < view.columns.begin || x >= view.columns.end || y < view.rows.begin || y >= view.rows.end)
        return 0;
    std::uint32_t pixel = 0;
    std::memcpy(&pixel, view.at(x, y), sizeof pixel);
    return pixel;
}

void vpixFillRect(FrameBuffer* handle, const FrameRect* rect, std::uint32_t color) {
    const PixKit::PixelView view = PixKit::viewOf(handle);
    const PixKit::Range columns = intersection(PixKit::columnsOf(*rect), view.columns);
    const PixKit::Range rows = intersection(PixKit::rowsOf(*rect), view.rows);
    if (columns.empty() || rows.empty()) return;
    const std::int64_t rowLength = columns.size() * view.pixelBytes;
    // Rows are stored bottom-up; memory is walked upwards.
    const std::uint8_t* first = view.at(columns.begin, rows.end - 1);
    for (std::int64_t i = 0; i < rowLength; i += sizeof color) {
        std::memcpy(view.at(columns.begin, rows.end - 1) + i, &color, sizeof color);
    }
    for (std::int64_t y = rows.end - 2; y >= rows.begin; --y) {
        // Rows may overlap.
        std::memmove(view.at(columns.begin, y), first, static_cast<std::size_t>(rowLength));
    }
}
