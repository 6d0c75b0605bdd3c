// SPDX-License-Identifier: MIT
// Geometry that the settings dialogs share, without any window.
#ifndef VIREO_FRAMEWORK_DIALOG_GEOMETRY_H
#define VIREO_FRAMEWORK_DIALOG_GEOMETRY_H

#include <algorithm>

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

/// The markers below a strip: pictures of 15 x 8 pixels whose middle points at a value of 0 to 255.
inline constexpr int markerWidth = 15;
inline constexpr int markerHeight = 8;

/// Where a marker's left edge stands in an off-screen strip of this width.
constexpr int markerX(int stripWidth, int value) { return ((stripWidth - markerWidth) * value + 127) / 255; }

/// Bar i of 256 across a width: the left edge of a bar of one pixel.
constexpr int barX(int width, int i) { return std::min(width, (width * i + 127) / 255); }

/// The value under a marker that is dragged along a track.
struct MarkerTrack {
    int left = 0;   ///< Of the marker's left edge, at value 0.
    int right = 0;  ///< At value 255.

    int length() const { return right - left; }

    /// `x` of the pointer, `grabOffset` from there to the marker's left edge.
    int valueAt(int x, int grabOffset) const {
        const int position = std::clamp(x + grabOffset - left, 0, length());
        return (length() / 2 + position * 255) / length();
    }
};

/// A preview of a frame, centred across `around` and down between two lines, each half truncated.
constexpr Box previewBetween(int aroundLeft, int aroundRight, int top, int bottom, int width, int height) {
    return boxAt(aroundLeft + (aroundRight - aroundLeft - width) / 2, top + (bottom - top - height) / 2,
                 width, height);
}

#endif
