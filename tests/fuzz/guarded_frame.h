// SPDX-License-Identifier: MIT
// Frames whose surroundings nobody may touch.
#ifndef VIREO_TESTS_FUZZ_GUARDED_FRAME_H
#define VIREO_TESTS_FUZZ_GUARDED_FRAME_H

#include "host/pixkit/frame_buffer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

/// How a frame lies in memory. Sides may be empty or inverted, rows may overlap.
struct FrameShape {
    FrameRect bounds;
    std::int32_t rowBytes;
    std::int64_t pixelBytes;
    bool againstEnd;  ///< The rows end, rather than begin, where a guard page does.

    std::int64_t width() const { return std::int64_t{bounds.right} - bounds.left; }
    std::int64_t height() const { return std::int64_t{bounds.bottom} - bounds.top; }
    bool empty() const { return width() <= 0 || height() <= 0; }
    std::int64_t rowLength() const { return empty() ? 0 : width() * pixelBytes; }
    /// From the first byte of a row to the last byte of any.
    std::int64_t length() const;

    static constexpr std::int64_t largestLength = 21 << 20;
};

/// On pages between two that cannot be accessed. Nor can what lies around the rows, as far as the address
/// sanitizer can tell bytes apart, and a write to it is found to the byte.
class GuardedFrame {
public:
    /// `padding` tells whether the bytes between the rows belong to them. The pixels are noise; where
    /// `opaque` is set their fourth bytes are 0 or 255.
    enum class Padding { Guarded, Open };
    GuardedFrame(const FrameShape& shape, Padding padding, std::uint64_t seed, bool opaque);
    GuardedFrame(const GuardedFrame&) = delete;
    GuardedFrame& operator=(const GuardedFrame&) = delete;
    ~GuardedFrame();

    /// What lies between the two pages, and what stood in the frame's part of it.
    struct Area {
        std::span<std::uint8_t> pages;
        std::vector<std::uint8_t> before;
    };

    FrameBuffer* handle() { return descriptor_.get(); }

    /// Lifts the guards and tells whether the bytes stayed, but for those of rows that may change.
    bool kept(bool rowsMayChange);

private:
    std::uint8_t* row(std::int64_t index) const { return first_ + index * shape_.rowBytes; }
    /// Calls with each part of the memory that belongs to the frame: where it begins, and its length.
    template <class Visit>
    void forEachPart(Visit&& visit) const;

    FrameShape shape_;
    Padding padding_;
    Area area_;
    std::span<std::uint8_t> memory_;           ///< The pages that the rows touch.
    std::uint8_t* lowest_;                     ///< The first byte of all rows.
    std::uint8_t* first_;                      ///< The first of the first row.
    std::unique_ptr<FrameBuffer> descriptor_;  ///< On the heap, where nothing else lies behind it.
};

#endif
