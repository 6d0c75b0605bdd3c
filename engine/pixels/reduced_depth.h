// SPDX-License-Identifier: MIT
// Between deeper samples and the bytes of filters that take nothing else.
#ifndef VIREO_ENGINE_PIXELS_REDUCED_DEPTH_H
#define VIREO_ENGINE_PIXELS_REDUCED_DEPTH_H

#include "engine/pixels/pixel_layout.h"

namespace vireo {

/// Brings `width` pixels of B, G, R, A to 8 bits. `dither` has the row's thresholds; floats are limited to 0
/// to 1.
void rowToBytes(SampleDepth depth, const void* bgra, const float* dither, std::uint8_t* bytes,
                std::ptrdiff_t width);

/// The way back; full stays full.
void rowFromBytes(SampleDepth depth, const std::uint8_t* bytes, void* bgra, std::ptrdiff_t width);

}  // namespace vireo

#endif
