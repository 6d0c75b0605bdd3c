// SPDX-License-Identifier: MIT
// Vectors of pixels from scattered places, for kernel files.
#ifndef VIREO_FILTERS_LENS_GATHER_H
#define VIREO_FILTERS_LENS_GATHER_H

#include "framework/pixel_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {

/// The pixel at each byte offset from `base`.
inline PixelVector gatherPixels(const std::uint8_t* base, IntVector offsets) {
#if defined(__AVX512BW__)
    // The form without a mask makes this compiler warn of its own header.
    return (PixelVector)_mm512_mask_i32gather_epi32(_mm512_setzero_si512(), 0xFFFF, (__m512i)offsets, base,
                                                    1);
#elif defined(__AVX2__)
    return (PixelVector)_mm256_i32gather_epi32(reinterpret_cast<const int*>(base), (__m256i)offsets, 1);
#else
    PixelVector pixels;
    for (int i = 0; i < vectorPixels; ++i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, base + offsets[i], sizeof pixel);
        pixels[i] = pixel;
    }
    return pixels;
#endif
}

/// Whether every lane of a comparison's result holds.
inline bool allOf(IntVector lanes) {
#if defined(__AVX512BW__)
    return _mm512_movepi32_mask((__m512i)lanes) == 0xFFFF;
#elif defined(__AVX2__)
    return _mm256_movemask_epi8((__m256i)lanes) == -1;
#elif defined(__SSE2__)
    return _mm_movemask_epi8((__m128i)lanes) == 0xFFFF;
#elif defined(__wasm_simd128__)
    return wasm_i32x4_all_true((v128_t)lanes);
#else
    std::int32_t all = -1;
    for (int i = 0; i < vectorPixels; ++i) all &= lanes[i];
    return all == -1;
#endif
}

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
