// SPDX-License-Identifier: MIT
// A Gaussian cut at its reach, along one direction, at a cost that does not depend on the reach.
//
// Over the window of 2 reach + 1 pixels the Gaussian is, within 0.2 of 255 grey levels for any picture, a
// constant and three cosines that fit the window once, twice and three times. A picture's sum against such a
// cosine needs no pixel inside the window: as the window walks on it swings like a pendulum, driven by the
// pixel that enters less the pixel that leaves.
#ifndef VIREO_HOST_FXKIT_GAUSSIAN_BLUR_KERNELS_H
#define VIREO_HOST_FXKIT_GAUSSIAN_BLUR_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstddef>
#include <cstdint>

inline constexpr int blurCosines = 3;

/// What a walk carries from pixel to pixel: the window's sum, then place and speed of each pendulum.
inline constexpr int blurStateValues = 1 + 2 * blurCosines;

struct BlurState {
    float values[blurStateValues];
};

/// What the pass down multiplies its results by, so that 16 bits hold them to a fraction of a grey level.
inline constexpr int blurFixedOne = 128;

/// How to blur along one direction of a picture.
struct BlurAxis {
    std::int64_t reach;
    std::int64_t length;             ///< Pixels along the direction; at least 1.
    float weights[1 + blurCosines];  ///< Of the window's sum and the places.
    float pull[blurCosines];         ///< What a pendulum's speed loses per step and unit of its place.
    float half;              ///< What the sum begins with, so that results can be cut off to be rounded.
    const BlurState* start;  ///< What each pixel in reach adds to the state at the first pixel.
    std::int64_t startCount;
};

/// A walk goes along a strip of pixels that lie side by side. Its state is blurStateValues runs of four
/// floats for each pixel of the strip. `first` is the strip at the direction's first pixel, `step` the way
/// from there to the second, in values.
struct BlurKernels {
    int stripPixels;

    void (*startBytes)(const BlurAxis& axis, const std::uint8_t* first, std::ptrdiff_t step, float* state);
    void (*startFixed)(const BlurAxis& axis, const std::int16_t* first, std::ptrdiff_t step, float* state);

    /// Blurs the `count` pixels at `from`. The results of the strip's first `lines` pixels go to lines that
    /// lie `line` values apart, one pixel after the other.
    void (*walkBytes)(const BlurAxis& axis, const std::uint8_t* first, std::ptrdiff_t step, std::int64_t from,
                      std::int64_t count, float* state, std::int16_t* result, std::ptrdiff_t line, int lines);
    void (*walkFixed)(const BlurAxis& axis, const std::int16_t* first, std::ptrdiff_t step, std::int64_t from,
                      std::int64_t count, float* state, std::uint8_t* result, std::ptrdiff_t line, int lines);
};

VIREO_KERNEL_TABLES(BlurKernels, blurKernels)

#endif
