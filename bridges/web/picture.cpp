// SPDX-License-Identifier: MIT
#include "bridges/web/picture.h"

#include <cstring>
#include <limits>
#include <new>

namespace web {
namespace {

constexpr std::align_val_t alignment{64};

/// The row bytes of a picture that can be addressed; throws std::bad_alloc for others.
std::int32_t checkedRowBytes(int width, int height) {
    const std::int64_t rowBytes = (std::int64_t{width} * 4 + 63) / 64 * 64;
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (width <= 0 || height <= 0 || rowBytes > most / height) throw std::bad_alloc();
    return static_cast<std::int32_t>(rowBytes);
}

}  // namespace

void Picture::Free::operator()(std::uint8_t* pixels) const { ::operator delete[](pixels, alignment); }

Picture::Picture(int width, int height) {
    const std::int32_t rowBytes = checkedRowBytes(width, height);
    const std::size_t size = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height);
    pixels_.reset(static_cast<std::uint8_t*>(::operator new[](size, alignment)));
    buffer_ = {{0, 0, width, height}, rowBytes, 0, pixels_.get()};
}

void Picture::exchangeRedAndBlue() {
    for (int y = 0; y < height(); ++y) {
        std::uint8_t* row = pixels() + std::int64_t{y} * rowBytes();
        for (int x = 0; x < width(); ++x) {
            std::uint32_t pixel;
            std::memcpy(&pixel, row + 4 * x, 4);
            pixel = (pixel & 0xFF00FF00) | (pixel & 0xFF) << 16 | (pixel >> 16 & 0xFF);
            std::memcpy(row + 4 * x, &pixel, 4);
        }
    }
}

}  // namespace web
