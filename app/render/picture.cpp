// SPDX-License-Identifier: MIT
#include "app/render/picture.h"

#include <limits>
#include <new>

namespace vireo {
namespace {

constexpr std::align_val_t alignment{64};

}  // namespace

void Picture::Release::operator()(std::uint8_t* pixels) const { ::operator delete[](pixels, alignment); }

Picture::Picture(int width, int height, std::uint32_t format) : format_(format) {
    const std::int64_t rowBytes = (std::int64_t{width} * PixKit::bytesPerPixel(format) + 63) / 64 * 64;
    if (width <= 0 || height <= 0 || rowBytes > std::numeric_limits<std::int32_t>::max())
        throw std::bad_alloc();
    pixels_.reset(static_cast<std::uint8_t*>(
        ::operator new[](static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height), alignment)));
    buffer_ = {{0, 0, width, height}, static_cast<std::int32_t>(rowBytes), 0, pixels_.get()};
    if (format != PixKit::formatBgra) vireoHostSetPixelFormat(&buffer_, format);
}

Picture::~Picture() {
    if (format_ != PixKit::formatBgra) vireoHostSetPixelFormat(&buffer_, PixKit::formatBgra);
}

}  // namespace vireo
