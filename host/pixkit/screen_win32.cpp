// SPDX-License-Identifier: MIT
#include "host/pixkit/pixel_view.h"
#include "host/pixkit/pixkit.h"
#include "host/win32.h"

#include <limits>
#include <memory>

void vpixToScreen(FrameBuffer* handle, void* deviceContext, const FrameRect* target) {
    const std::int64_t width = PixKit::columnsOf(*target).size();
    const std::int64_t height = PixKit::rowsOf(*target).size();
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    if (width > largest || height > largest) return;
    const FrameRect scaled{0, 0, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
    const std::unique_ptr<FrameBuffer, decltype(&vpixDispose)> picture(vpixNew(&scaled), vpixDispose);
    if (picture == nullptr) return;
    vpixCopy(handle, picture.get(), &handle->bounds, &scaled, VPixCopyReplace);

    // Bitmaps have their rows bottom-up too. What pads the rows counts as width that is not shown.
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = picture->rowBytes / 4;
    info.bmiHeader.biHeight = scaled.bottom;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    SetDIBitsToDevice(static_cast<HDC>(deviceContext), target->left, target->top,
                      static_cast<DWORD>(scaled.right), static_cast<DWORD>(scaled.bottom), 0, 0, 0,
                      static_cast<UINT>(scaled.bottom), picture->pixels.get(), &info, DIB_RGB_COLORS);
}
