// SPDX-License-Identifier: MIT
// Pixels' marks between vectors and bits, in kernel files.
#ifndef VIREO_FILTERS_WARP_PIXEL_BITS_H
#define VIREO_FILTERS_WARP_PIXEL_BITS_H

#include "framework/pixel_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {

/// Bit i for lane i of a comparison's result.
inline std::uint32_t bitsOf(IntVector lanes) {
#if defined(__AVX512DQ__)
    return _mm512_movepi32_mask((__m512i)lanes);
#elif defined(__AVX2__)
    return static_cast<std::uint32_t>(_mm256_movemask_ps((__m256)lanes));
#elif defined(__SSE2__)
    return static_cast<std::uint32_t>(_mm_movemask_ps((__m128)lanes));
#elif defined(__wasm_simd128__)
    return wasm_i32x4_bitmask((v128_t)lanes);
#else
    std::uint32_t bits = 0;
    for (int i = 0; i < vectorPixels; ++i) bits |= (lanes[i] & 1u) << i;
    return bits;
#endif
}

/// Lane i is all ones where bit i is set, else 0.
inline PixelVector lanesOf(std::uint32_t bits) {
    PixelVector laneBits;
    for (int i = 0; i < vectorPixels; ++i) laneBits[i] = 1u << i;
    return (PixelVector)(((PixelVector{} + bits) & laneBits) != 0);
}

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
