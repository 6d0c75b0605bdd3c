// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_HOST_TEST_BUFFER_H
#define VIREO_TESTS_HOST_TEST_BUFFER_H

#include "host/pixkit/pixel_formats.h"
#include "host/vireo_host.h"

#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <random>
#include <vector>

/// What a host may hand over.
constexpr std::int32_t minimum = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t maximum = std::numeric_limits<std::int32_t>::max();

inline std::ostream& operator<<(std::ostream& out, const FrameRect& rect) {
    return out << '{' << rect.left << ", " << rect.top << ", " << rect.right << ", " << rect.bottom << '}';
}

/// Memory that frames of any layout lie in, so that a write outside their pixels shows.
using Memory = std::vector<std::uint8_t>;

inline Memory noise(std::size_t size, std::mt19937& random) {
    Memory memory(size);
    for (std::uint8_t& byte : memory) byte = static_cast<std::uint8_t>(random());
    return memory;
}

/// A frame somewhere inside a memory. The memory outlives it and is not resized.
class TestBuffer {
public:
    TestBuffer(Memory& memory, std::size_t firstPixel, FrameRect bounds, std::int32_t rowBytes,
               std::uint32_t format = PixKit::formatBgra)
        : frame_{bounds, rowBytes, 0, memory.data() + firstPixel}, firstPixel_(firstPixel), format_(format) {
        vireoHostSetPixelFormat(&frame_, format);
    }
    ~TestBuffer() { vireoHostSetPixelFormat(&frame_, PixKit::formatBgra); }
    TestBuffer(const TestBuffer&) = delete;
    TestBuffer& operator=(const TestBuffer&) = delete;

    FrameBuffer* handle() { return &frame_; }
    const FrameRect& bounds() const { return frame_.bounds; }
    int pixelBytes() const { return PixKit::bytesPerPixel(format_); }

    /// Where a pixel lies in the memory.
    std::size_t offset(std::int64_t x, std::int64_t y) const {
        return firstPixel_ + static_cast<std::size_t>((frame_.bounds.bottom - 1 - y) * frame_.rowBytes +
                                                      (x - frame_.bounds.left) * pixelBytes());
    }

private:
    FrameBuffer frame_;
    std::size_t firstPixel_;
    std::uint32_t format_;
};

#endif
