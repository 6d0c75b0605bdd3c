// SPDX-License-Identifier: MIT
#include "host/pixkit/pixel_formats.h"
#include "host/pixkit/pixkit.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace {

constexpr std::int64_t rowAlignment = 64;

struct FreeMemory {
    void operator()(void* memory) const { std::free(memory); }
};

struct PixelMemory {
    std::unique_ptr<std::uint8_t, FreeMemory> bytes;
    std::size_t size = 0;
};

/// A buffer that PixKit made: the descriptor, and what belongs to it.
struct OwnedBuffer {
    FrameBuffer descriptor;
    PixelMemory memory;
};

/// The last buffer that was disposed. Filters make and dispose one every frame, and memory fresh from the
/// system costs more than the filters' own work.
class SpareBuffer {
public:
    ~SpareBuffer() { delete take(); }

    OwnedBuffer* take() { return spare_.exchange(nullptr, std::memory_order_acq_rel); }
    void keep(OwnedBuffer* buffer) { delete spare_.exchange(buffer, std::memory_order_acq_rel); }

private:
    std::atomic<OwnedBuffer*> spare_{nullptr};
} spare;

/// Large frames lie on large pages where the system has them: walks along a column meet another page with
/// every row, of which the processor remembers fewer than such a frame has rows.
void* zeroedMemory(std::size_t size) {
#if defined(MADV_HUGEPAGE)
    constexpr std::size_t largePage = std::size_t{2} << 20;
    // Beyond any picture the system's own zeroing, which comes with the first use, is better.
    constexpr std::size_t largest = 128 * largePage;
    if (size >= 2 * largePage && size <= largest) {
        const std::size_t whole = (size + largePage - 1) / largePage * largePage;
        void* memory = std::aligned_alloc(largePage, whole);
        if (memory == nullptr) return nullptr;
        // A refusal leaves ordinary pages.
        madvise(memory, whole, MADV_HUGEPAGE);
        return std::memset(memory, 0, size);
    }
#endif
    return std::calloc(size, 1);
}

PixelMemory zeroed(std::size_t size) {
    const std::unique_ptr<OwnedBuffer> reused(spare.take());
    if (reused != nullptr && reused->memory.size >= size && reused->memory.size / 2 <= size) {
        std::memset(reused->memory.bytes.get(), 0, size);
        return std::move(reused->memory);
    }
    return {std::unique_ptr<std::uint8_t, FreeMemory>(static_cast<std::uint8_t*>(zeroedMemory(size))), size};
}

}  // namespace

void vpixGetBounds(FrameBuffer* handle, FrameRect* bounds) { *bounds = handle->bounds; }

std::int32_t vpixGetRowbytes(FrameBuffer* handle) { return handle->rowBytes; }

void* vpixGetPixels(FrameBuffer* handle) { return handle->pixels; }

FrameBuffer* vpixNew(const FrameRect* bounds) {
    const std::int64_t width = std::int64_t{bounds->right} - bounds->left;
    const std::int64_t height = std::int64_t{bounds->bottom} - bounds->top;
    if (width <= 0 || height <= 0) return nullptr;
    // An odd number of cache lines a row: else the lines of a column fall on few places of the cache, and
    // work along columns waits for memory.
    const std::int64_t rowLines = (width * 4 + rowAlignment - 1) / rowAlignment | 1;
    const std::int64_t rowBytes = rowLines * rowAlignment;
    if (rowBytes > std::numeric_limits<std::int32_t>::max()) return nullptr;
    std::int64_t size = 0;
    if (__builtin_mul_overflow(rowBytes, height, &size) ||
        size > std::numeric_limits<std::ptrdiff_t>::max() - rowAlignment) {
        return nullptr;
    }
    PixelMemory memory = zeroed(static_cast<std::size_t>(size + rowAlignment));
    if (memory.bytes == nullptr) return nullptr;
    const auto address = reinterpret_cast<std::uintptr_t>(memory.bytes.get());
    std::uint8_t* pixels = memory.bytes.get() + (rowAlignment - address % rowAlignment) % rowAlignment;
    auto* buffer = new (std::nothrow)
        OwnedBuffer{{*bounds, static_cast<std::int32_t>(rowBytes), 0, pixels}, std::move(memory)};
    return buffer == nullptr ? nullptr : &buffer->descriptor;
}

void vpixDispose(FrameBuffer* handle) {
    if (handle == nullptr) return;
    PixKit::forgetPixelFormat(handle);
    spare.keep(reinterpret_cast<OwnedBuffer*>(handle));
}

void vpixLockPixels(FrameBuffer* handle, void** pixels) { *pixels = handle->pixels; }

void vpixUnlockPixels(FrameBuffer*) {}
