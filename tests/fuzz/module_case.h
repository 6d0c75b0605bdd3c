// SPDX-License-Identifier: MIT
// What an input of the module's fuzzer means.
#ifndef VIREO_TESTS_FUZZ_MODULE_CASE_H
#define VIREO_TESTS_FUZZ_MODULE_CASE_H

#include "tests/fuzz/guarded_frame.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <span>

#pragma pack(push, 1)

struct ShapeCase {
    std::int32_t left;
    std::int32_t top;
    std::int16_t width;
    std::int16_t height;
    std::uint8_t
        layout;  ///< Row bytes: see shapeOf(). The highest bit puts the rows against the memory's end.
    std::int16_t padding;
};

/// An input is this record, zeros standing for what it lacks, and the bytes of the settings behind it.
struct ModuleCase {
    enum Options : std::uint8_t {
        NoSettings = 1,
        OwnDestination = 2,  ///< The destination has a shape of its own.
        InPlace = 4,
        NoFrameCallback = 8,
        NoServices = 16,
        NoFormatFunction = 32,
        NoSuite = 64,
        OpaquePixels = 128
    };
    enum Calls : std::uint8_t {
        InitBefore = 1,
        InitAfter = 2,
        Format = 4,
        Flags = 8,
        Setup = 16,
        Other = 32
    };

    std::uint8_t filter;
    std::uint8_t options;
    std::uint8_t calls;
    std::uint8_t format;  ///< Of both frames.
    std::int16_t otherSelector;
    std::uint32_t formatIndex;
    ShapeCase source;
    ShapeCase destination;
    std::uint32_t frameTime;
    std::uint32_t clipDuration;
    std::uint32_t fieldDuration;
    std::uint16_t fieldFlags;
    std::uint8_t failingAllocation;  ///< Counted from 1; 0 for none.
    std::uint8_t settingsSurplus;    ///< Bytes of the handle behind the parameters.
    std::uint32_t noise;

    bool has(Options option) const { return (options & option) != 0; }
    bool has(Calls call) const { return (calls & call) != 0; }
};

#pragma pack(pop)

inline ModuleCase moduleCase(std::span<const std::uint8_t> input) {
    ModuleCase read{};
    std::memcpy(&read, input.data(), std::min(input.size(), sizeof read));
    return read;
}

/// The shape, cut down to a size that is rendered in a millisecond, or in some where `large` allows a frame
/// that no cache holds.
inline FrameShape shapeOf(const ShapeCase& shape, std::int64_t pixelBytes, bool large) {
    const std::int64_t largestPixels = large ? 5 << 20 : 1 << 16;
    const std::int64_t largestLength = large ? 20 << 20 : 1 << 19;
    constexpr std::int64_t longestSide = 6000;
    constexpr std::int64_t furthest = std::numeric_limits<std::int32_t>::max() - longestSide;
    const auto side = [&](std::int16_t value) { return std::clamp<std::int64_t>(value, -8, longestSide); };
    const auto begin = [&](std::int32_t value) {
        return std::clamp<std::int64_t>(value, -furthest, furthest);
    };
    const std::int64_t width = side(shape.width);
    std::int64_t height = side(shape.height);
    const std::int64_t rowLength = std::max<std::int64_t>(width, 0) * pixelBytes;

    std::int64_t rowBytes = 0;
    const std::int64_t wholePixels = rowLength + 4 * (shape.padding & 0xFF);
    const std::int64_t anyBytes = rowLength + (shape.padding & 0x3FF);
    switch (shape.layout & 7) {
        case 0: rowBytes = wholePixels; break;
        case 1: rowBytes = -wholePixels; break;
        case 2: rowBytes = anyBytes; break;
        case 3: rowBytes = -anyBytes; break;
        case 4: rowBytes = rowLength; break;
        case 5: rowBytes = shape.padding; break;
        default: rowBytes = 16 * std::int64_t{shape.padding}; break;
    }
    if (width > 0) height = std::min(height, std::max<std::int64_t>(1, largestPixels / width));
    if (rowBytes != 0) {
        height =
            std::min(height, 1 + std::max<std::int64_t>(0, largestLength - rowLength) / std::abs(rowBytes));
    }
    const std::int64_t left = begin(shape.left), top = begin(shape.top);
    const auto narrowed = [](std::int64_t value) { return static_cast<std::int32_t>(value); };
    return {{narrowed(left), narrowed(top), narrowed(left + width), narrowed(top + height)},
            narrowed(rowBytes),
            pixelBytes,
            (shape.layout & 0x80) != 0};
}

#endif
