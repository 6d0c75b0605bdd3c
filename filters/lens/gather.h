// SPDX-License-Identifier: MIT
// Vectors of pixels from scattered places, for kernel files.
#ifndef VIREO_FILTERS_LENS_GATHER_H
#define VIREO_FILTERS_LENS_GATHER_H

#include "framework/pixel_vectors.h"

#include <utility>

namespace VIREO_KERNEL_NAMESPACE {

/// Pixels and their right neighbours.
struct PixelPairs {
    PixelVector left;
    PixelVector right;
};

typedef std::uint64_t PairVector __attribute__((vector_size(vectorBytes)));

template <int... i>
PixelVector pairsAt(const std::uint8_t* base, const std::int32_t* offsets, std::integer_sequence<int, i...>) {
    const auto pair = [&](int lane) {
        std::uint64_t pixels;
        std::memcpy(&pixels, base + offsets[lane], sizeof pixels);
        return pixels;
    };
    return (PixelVector)PairVector{pair(i)...};
}

template <int... i>
PixelPairs separated(PixelVector first, PixelVector second, std::integer_sequence<int, i...>) {
    return {__builtin_shufflevector(first, second, 2 * i...),
            __builtin_shufflevector(first, second, 2 * i + 1 ...)};
}

/// The pixel at each byte offset from `base`, and the one beside it. Where the processor gathers by itself it
/// was measured to be no faster than such loads of two pixels each.
inline PixelPairs gatherPairs(const std::uint8_t* base, IntVector offsets) {
    constexpr std::make_integer_sequence<int, vectorPixels / 2> half;
    std::int32_t each[vectorPixels];
    std::memcpy(each, &offsets, sizeof each);
    return separated(pairsAt(base, each, half), pairsAt(base, each + vectorPixels / 2, half),
                     std::make_integer_sequence<int, vectorPixels>());
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
