// SPDX-License-Identifier: MIT
// Geometry that the settings dialogs share, without any window.
#ifndef VIREO_FRAMEWORK_DIALOG_GEOMETRY_H
#define VIREO_FRAMEWORK_DIALOG_GEOMETRY_H

#include <algorithm>
#include <cstdint>

/// A rectangle in a dialog's client pixels; right and bottom are excluded.
struct Box {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool contains(int x, int y) const { return x >= left && x < right && y >= top && y < bottom; }
    Box grownBy(int pixels) const { return {left - pixels, top - pixels, right + pixels, bottom + pixels}; }

    bool operator==(const Box&) const = default;
};

constexpr Box boxAt(int left, int top, int width, int height) {
    return {left, top, left + width, top + height};
}

/// Bar i of 256 across a width: the left edge of a bar of one pixel.
constexpr int barX(int width, int i) { return std::min(width, (width * i + 127) / 255); }

/// The height of a histogram's bar, rounded; 0 where nothing was counted.
constexpr int barHeight(int frameHeight, std::uint32_t count, std::uint32_t largest) {
    if (largest == 0) return 0;
    return static_cast<int>((std::uint64_t{count} * static_cast<std::uint64_t>(frameHeight) + largest / 2) /
                            largest);
}

/// Markers that hang from a line: pictures of 15 x 8 pixels whose middle points at a value of 0 to 255.
struct MarkerStrip {
    static constexpr int markerWidth = 15;
    static constexpr int height = 8;
    static constexpr int overhang = 7;

    Box line;

    /// What is drawn of the strip: half a marker wider than the line on either side, just below it.
    Box area() const {
        return {line.left - overhang, line.bottom, line.right + overhang, line.bottom + height};
    }

    /// Of a marker's left edge inside the area.
    int markerX(int value) const { return ((area().width() - markerWidth) * value + 127) / 255; }

    Box marker(int value) const {
        return boxAt(area().left + markerX(value), line.bottom, markerWidth, height);
    }

    /// The value of a marker that is dragged: the pointer's x, and from there to the marker's left edge.
    int valueAt(int x, int grabOffset) const {
        const int begin = line.left - overhang;
        const int length = line.right - overhang - 1 - begin;
        return (length / 2 + std::clamp(x + grabOffset - begin, 0, length) * 255) / length;
    }
};

/// A preview of a frame, centred across `around` and down between two lines, each half truncated.
constexpr Box previewBetween(int aroundLeft, int aroundRight, int top, int bottom, int width, int height) {
    return boxAt(aroundLeft + (aroundRight - aroundLeft - width) / 2, top + (bottom - top - height) / 2,
                 width, height);
}

#endif
