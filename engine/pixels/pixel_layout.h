// SPDX-License-Identifier: MIT
// Between the pixels that callers have and those that filters take.
#ifndef VIREO_ENGINE_PIXELS_PIXEL_LAYOUT_H
#define VIREO_ENGINE_PIXELS_PIXEL_LAYOUT_H

#include <cstddef>
#include <cstdint>

namespace vireo {

/// The order of a pixel's samples in memory. An X is read as opaque and written as full.
enum class PixelLayout { Bgra, Rgba, Argb, Abgr, Bgrx, Rgbx, Xrgb, Xbgr, Bgr, Rgb, Grey };

/// Bytes, words of 0 to 65535, or floats of 0 to 1.
enum class SampleDepth { Eight = 8, Sixteen = 16, Float = 32 };

constexpr int samplesOf(PixelLayout layout) {
    return layout == PixelLayout::Grey ? 1 : layout == PixelLayout::Bgr || layout == PixelLayout::Rgb ? 3 : 4;
}

constexpr int bytesOf(PixelLayout layout, SampleDepth depth) {
    return samplesOf(layout) * static_cast<int>(depth) / 8;
}

/// How the pixels of a row lie in memory.
struct PixelFormat {
    PixelLayout layout = PixelLayout::Bgra;
    SampleDepth depth = SampleDepth::Eight;
    bool premultiplied = false;  ///< Colours are multiplied by alpha.

    bool operator==(const PixelFormat&) const = default;
};

/// Converts `width` pixels to B, G, R, A of the same depth, straight alpha; grey becomes three equal colours.
/// Premultiplied colours are divided by alpha, rounded half up and limited; they are 0 where alpha is. Any
/// alignment; the rows may be the same where pixels have the same size, else they lie apart.
void rowToBgra(const PixelFormat& format, const void* source, void* bgra, std::ptrdiff_t width);

/// The way back. Colours become grey as BT.601 luma, equal ones as they are.
void rowFromBgra(const PixelFormat& format, const void* bgra, void* destination, std::ptrdiff_t width);

}  // namespace vireo

#endif
