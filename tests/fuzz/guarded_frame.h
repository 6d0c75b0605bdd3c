// SPDX-License-Identifier: MIT
// Frames whose surroundings nobody may touch.
#ifndef VIREO_TESTS_FUZZ_GUARDED_FRAME_H
#define VIREO_TESTS_FUZZ_GUARDED_FRAME_H

#include "host/pixkit/frame_buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

/// How a frame lies in memory. Sides may be empty or inverted, rows may overlap.
struct FrameShape {
    FrameRect bounds;
    std::int32_t rowBytes;
    std::int64_t pixelBytes;
    bool againstEnd;  ///< The rows end, rather than begin, where a guard page does.

    bool operator==(const FrameShape& other) const;

    std::int64_t width() const { return std::int64_t{bounds.right} - bounds.left; }
    std::int64_t height() const { return std::int64_t{bounds.bottom} - bounds.top; }
    bool empty() const { return width() <= 0 || height() <= 0; }
    std::int64_t rowLength() const { return empty() ? 0 : width() * pixelBytes; }
    /// From the first byte of a row to the last byte of any.
    std::int64_t length() const;
};

/// Pages between two that cannot be accessed.
class GuardedMemory {
public:
    /// At least `size` bytes.
    explicit GuardedMemory(std::size_t size);
    GuardedMemory(const GuardedMemory&) = delete;
    GuardedMemory& operator=(const GuardedMemory&) = delete;
    ~GuardedMemory();

    std::uint8_t* begin() const { return begin_; }
    std::uint8_t* end() const { return begin_ + size_; }

private:
    std::size_t size_;
    std::uint8_t* begin_;
};

/// What lies around the rows cannot be accessed, as far as the address sanitizer can tell bytes apart, and a
/// write to it is found to the byte.
class GuardedFrame {
public:
    /// `padding` tells whether the bytes between the rows belong to them. The pixels are noise; where
    /// `opaque` is set their fourth bytes are 0 or 255.
    enum class Padding { Guarded, Open };
    GuardedFrame(const FrameShape& shape, Padding padding, std::uint64_t seed, bool opaque);
    GuardedFrame(const GuardedFrame&) = delete;
    GuardedFrame& operator=(const GuardedFrame&) = delete;
    ~GuardedFrame();

    FrameBuffer* handle() { return descriptor_.get(); }

    /// Lifts the guards, so that the two questions can be asked.
    void open();
    bool unchanged() const;
    bool changedInRowsOnly() const;

private:
    std::uint8_t* row(std::int64_t index) const { return first_ + index * shape_.rowBytes; }
    std::int64_t rows() const { return shape_.empty() ? 0 : shape_.height(); }
    void guard() const;

    FrameShape shape_;
    Padding padding_;
    GuardedMemory memory_;
    std::uint8_t* lowest_;                     ///< The first byte of all rows.
    std::uint8_t* first_;                      ///< The first of the first row.
    std::unique_ptr<FrameBuffer> descriptor_;  ///< On the heap, where nothing else lies behind it.
    std::vector<std::uint8_t> before_;
};

#endif
