// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_BYTES_H
#define VIREO_SIMD_BYTES_H

#include "simd/vectors.h"

#include <array>

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

/// What a function without state makes of each byte's place. Made by the compiler: some keep a loop that
/// fills a register, and take every byte through memory.
template <class Function>
Bytes bytesByPlace(Function) {
    static constexpr auto bytes = [] {
        std::array<std::uint8_t, vectorBytes> all{};
        for (std::size_t i = 0; i < all.size(); ++i) all[i] = Function{}(static_cast<int>(i));
        return all;
    }();
    return load<Bytes>(bytes.data());
}

/// Means, halves rounded up.
template <VectorOf<std::uint8_t> V>
V avg(V a, V b) {
#if defined(__SSE2__)
    if constexpr (sizeof(V) == 64) return (V)_mm512_avg_epu8((__m512i)a, (__m512i)b);
    if constexpr (sizeof(V) == 32) return (V)_mm256_avg_epu8((__m256i)a, (__m256i)b);
    if constexpr (sizeof(V) == 16) return (V)_mm_avg_epu8((__m128i)a, (__m128i)b);
#elif defined(__wasm_simd128__)
    return (V)wasm_u8x16_avgr((v128_t)a, (v128_t)b);
#elif defined(__aarch64__)
    return (V)vrhaddq_u8((uint8x16_t)a, (uint8x16_t)b);
#else
    return (a | b) - ((a ^ b) >> 1);
#endif
}

/// Sums of neighbours' products. They fit 16 bits.
template <VectorOf<std::uint8_t> V>
Vector<std::int16_t, sizeof(V)> maddubs(V bytes, Vector<std::int8_t, sizeof(V)> weights) {
    using Result = Vector<std::int16_t, sizeof(V)>;
#if defined(__SSSE3__)
    if constexpr (sizeof(V) == 64) return (Result)_mm512_maddubs_epi16((__m512i)bytes, (__m512i)weights);
    if constexpr (sizeof(V) == 32) return (Result)_mm256_maddubs_epi16((__m256i)bytes, (__m256i)weights);
    if constexpr (sizeof(V) == 16) return (Result)_mm_maddubs_epi16((__m128i)bytes, (__m128i)weights);
#else
    const auto words = (Vector<std::uint16_t, sizeof(V)>)bytes;
    const auto pairs = (Result)weights;
    return (Result)(words & 0xFF) * (pairs << 8 >> 8) + (Result)(words >> 8) * (pairs >> 8);
#endif
}

#if defined(VIREO_SIMD_SHUFFLE)

/// The byte at each index below 16, 0 for the index 0x80. Works within every 16 bytes.
template <VectorOf<std::uint8_t> V>
V shuffle(V bytes, V indices) {
#if defined(__AVX2__)
    if constexpr (sizeof(V) == 64) return (V)_mm512_shuffle_epi8((__m512i)bytes, (__m512i)indices);
    if constexpr (sizeof(V) == 32) return (V)_mm256_shuffle_epi8((__m256i)bytes, (__m256i)indices);
    if constexpr (sizeof(V) == 16) return (V)_mm_shuffle_epi8((__m128i)bytes, (__m128i)indices);
#elif defined(__wasm_simd128__)
    return (V)wasm_i8x16_swizzle((v128_t)bytes, (v128_t)indices);
#else
    return (V)vqtbl1q_u8((uint8x16_t)bytes, (uint8x16_t)indices);
#endif
}

#endif

#if defined(__AVX2__)

/// b's bytes where the mask's have their highest bit, else a's.
template <VectorOf<std::uint8_t> V>
V blend(V a, V b, V mask) {
    if constexpr (sizeof(V) == 64) {
        return (V)_mm512_mask_blend_epi8(_mm512_movepi8_mask((__m512i)mask), (__m512i)a, (__m512i)b);
    }
    if constexpr (sizeof(V) == 32) return (V)_mm256_blendv_epi8((__m256i)a, (__m256i)b, (__m256i)mask);
    if constexpr (sizeof(V) == 16) return (V)_mm_blendv_epi8((__m128i)a, (__m128i)b, (__m128i)mask);
}

#endif

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
