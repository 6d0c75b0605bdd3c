// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_WORDS_H
#define VIREO_SIMD_WORDS_H

#include "simd/vectors.h"

#include <algorithm>
#include <limits>

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

/// The upper 16 bits of each product.
template <VectorOf<std::uint16_t> V>
V mulhi(V a, V b) {
#if defined(__SSE2__)
    if constexpr (sizeof(V) == 64) return (V)_mm512_mulhi_epu16((__m512i)a, (__m512i)b);
    if constexpr (sizeof(V) == 32) return (V)_mm256_mulhi_epu16((__m256i)a, (__m256i)b);
    if constexpr (sizeof(V) == 16) return (V)_mm_mulhi_epu16((__m128i)a, (__m128i)b);
#elif defined(__wasm_simd128__)
    return (V)wasm_i16x8_shuffle(wasm_u32x4_extmul_low_u16x8((v128_t)a, (v128_t)b),
                                 wasm_u32x4_extmul_high_u16x8((v128_t)a, (v128_t)b), 1, 3, 5, 7, 9, 11, 13,
                                 15);
#elif defined(__aarch64__)
    const auto x = (uint16x8_t)a, y = (uint16x8_t)b;
    return (V)vuzp2q_u16((uint16x8_t)vmull_u16(vget_low_u16(x), vget_low_u16(y)),
                         (uint16x8_t)vmull_high_u16(x, y));
#else
    using Wide = Vector<std::uint32_t, sizeof(V)>;
    const Wide even = ((Wide)a & 0xFFFF) * ((Wide)b & 0xFFFF) >> 16;
    const Wide odd = ((Wide)a >> 16) * ((Wide)b >> 16) & 0xFFFF0000;
    return (V)(even | odd);
#endif
}

#if defined(VIREO_SIMD_COMPLETE)

/// Sums of neighbours' products.
template <VectorOf<std::int16_t> V>
Vector<std::int32_t, sizeof(V)> madd(V a, V b) {
    using Result = Vector<std::int32_t, sizeof(V)>;
#if defined(__SSE2__)
    if constexpr (sizeof(V) == 64) return (Result)_mm512_madd_epi16((__m512i)a, (__m512i)b);
    if constexpr (sizeof(V) == 32) return (Result)_mm256_madd_epi16((__m256i)a, (__m256i)b);
    if constexpr (sizeof(V) == 16) return (Result)_mm_madd_epi16((__m128i)a, (__m128i)b);
#elif defined(__wasm_simd128__)
    return (Result)wasm_i32x4_dot_i16x8((v128_t)a, (v128_t)b);
#else
    const auto x = (int16x8_t)a, y = (int16x8_t)b;
    return (Result)vpaddq_s32(vmull_s16(vget_low_s16(x), vget_low_s16(y)), vmull_high_s16(x, y));
#endif
}

/// Sums that stay at the ends of 16 bits.
template <VectorOf<std::int16_t> V>
V adds(V a, V b) {
#if defined(__SSE2__)
    if constexpr (sizeof(V) == 64) return (V)_mm512_adds_epi16((__m512i)a, (__m512i)b);
    if constexpr (sizeof(V) == 32) return (V)_mm256_adds_epi16((__m256i)a, (__m256i)b);
    if constexpr (sizeof(V) == 16) return (V)_mm_adds_epi16((__m128i)a, (__m128i)b);
#elif defined(__wasm_simd128__)
    return (V)wasm_i16x8_add_sat((v128_t)a, (v128_t)b);
#else
    return (V)vqaddq_s16((int16x8_t)a, (int16x8_t)b);
#endif
}

#endif

/// a's lanes, then b's, limited to what the narrower lanes hold. Works within every 16 bytes.
template <class Result, class V>
Result packLimited(V a, V b) {
    using Ends = std::numeric_limits<LaneOf<Result>>;
    const auto limited = [](LaneOf<V> lane) {
        return static_cast<LaneOf<Result>>(std::clamp<LaneOf<V>>(lane, Ends::min(), Ends::max()));
    };
    Result result;
    for (int i = 0; i < laneCount<V>; ++i) {
        result[i] = limited(a[i]);
        result[laneCount<V> + i] = limited(b[i]);
    }
    return result;
}

template <VectorOf<std::int32_t> V>
Vector<std::int16_t, sizeof(V)> packs(V a, V b) {
    using Result = Vector<std::int16_t, sizeof(V)>;
#if defined(__SSE2__)
    if constexpr (sizeof(V) == 64) return (Result)_mm512_packs_epi32((__m512i)a, (__m512i)b);
    if constexpr (sizeof(V) == 32) return (Result)_mm256_packs_epi32((__m256i)a, (__m256i)b);
    if constexpr (sizeof(V) == 16) return (Result)_mm_packs_epi32((__m128i)a, (__m128i)b);
#elif defined(__wasm_simd128__)
    return (Result)wasm_i16x8_narrow_i32x4((v128_t)a, (v128_t)b);
#elif defined(__aarch64__)
    return (Result)vqmovn_high_s32(vqmovn_s32((int32x4_t)a), (int32x4_t)b);
#else
    return packLimited<Result>(a, b);
#endif
}

template <VectorOf<std::int32_t> V>
Vector<std::uint16_t, sizeof(V)> packus(V a, V b) {
    using Result = Vector<std::uint16_t, sizeof(V)>;
#if defined(__AVX2__)
    if constexpr (sizeof(V) == 64) return (Result)_mm512_packus_epi32((__m512i)a, (__m512i)b);
    if constexpr (sizeof(V) == 32) return (Result)_mm256_packus_epi32((__m256i)a, (__m256i)b);
    if constexpr (sizeof(V) == 16) return (Result)_mm_packus_epi32((__m128i)a, (__m128i)b);
#elif defined(__wasm_simd128__)
    return (Result)wasm_u16x8_narrow_i32x4((v128_t)a, (v128_t)b);
#elif defined(__aarch64__)
    return (Result)vqmovun_high_s32(vqmovun_s32((int32x4_t)a), (int32x4_t)b);
#elif defined(__SSE2__)
    return (Result)packs(a - 0x8000, b - 0x8000) ^ 0x8000;
#else
    return packLimited<Result>(a, b);
#endif
}

template <VectorOf<std::int16_t> V>
Vector<std::uint8_t, sizeof(V)> packus(V a, V b) {
    using Result = Vector<std::uint8_t, sizeof(V)>;
#if defined(__SSE2__)
    if constexpr (sizeof(V) == 64) return (Result)_mm512_packus_epi16((__m512i)a, (__m512i)b);
    if constexpr (sizeof(V) == 32) return (Result)_mm256_packus_epi16((__m256i)a, (__m256i)b);
    if constexpr (sizeof(V) == 16) return (Result)_mm_packus_epi16((__m128i)a, (__m128i)b);
#elif defined(__wasm_simd128__)
    return (Result)wasm_u8x16_narrow_i16x8((v128_t)a, (v128_t)b);
#elif defined(__aarch64__)
    return (Result)vqmovun_high_s16(vqmovun_s16((int16x8_t)a), (int16x8_t)b);
#else
    return packLimited<Result>(a, b);
#endif
}

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
