// SPDX-License-Identifier: MIT
#include "host/pixkit/pixel_formats.h"
#include "host/pixkit/pixkit.h"

#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>

namespace {

constexpr std::int64_t rowAlignment = 64;

/// A buffer that PixKit made: the descriptor, and the pixels behind it in one block.
struct OwnedBuffer {
    FrameBuffer descriptor;
    void* block;
};

}  // namespace

void vpixGetBounds(FrameBuffer* handle, FrameRect* bounds) { *bounds = handle->bounds; }

std::int32_t vpixGetRowbytes(FrameBuffer* handle) { return handle->rowBytes; }

void* vpixGetPixels(FrameBuffer* handle) { return handle->pixels; }

FrameBuffer* vpixNew(const FrameRect* bounds) {
    const std::int64_t width = std::int64_t{bounds->right} - bounds->left;
    const std::int64_t height = std::int64_t{bounds->bottom} - bounds->top;
    if (width <= 0 || height <= 0) return nullptr;
    const std::int64_t rowBytes = (width * 4 + rowAlignment - 1) / rowAlignment * rowAlignment;
    if (rowBytes > std::numeric_limits<std::int32_t>::max()) return nullptr;
    std::int64_t size = 0;
    if (__builtin_mul_overflow(rowBytes, height, &size) ||
        size > std::numeric_limits<std::ptrdiff_t>::max() - rowAlignment) {
        return nullptr;
    }
    auto* buffer = static_cast<OwnedBuffer*>(std::malloc(sizeof(OwnedBuffer)));
    void* block = std::calloc(static_cast<std::size_t>(size + rowAlignment), 1);
    if (buffer == nullptr || block == nullptr) {
        std::free(buffer);
        std::free(block);
        return nullptr;
    }
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    void* pixels = static_cast<char*>(block) + (rowAlignment - address % rowAlignment) % rowAlignment;
    new (buffer) OwnedBuffer{{*bounds, static_cast<std::int32_t>(rowBytes), 0, pixels}, block};
    return &buffer->descriptor;
}

void vpixDispose(FrameBuffer* handle) {
    if (handle == nullptr) return;
    PixKit::forgetPixelFormat(handle);
    auto* buffer = reinterpret_cast<OwnedBuffer*>(handle);
    std::free(buffer->block);
    std::free(buffer);
}

void vpixLockPixels(FrameBuffer* handle, void** pixels) { *pixels = handle->pixels; }

void vpixUnlockPixels(FrameBuffer*) {}
