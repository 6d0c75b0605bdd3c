// SPDX-License-Identifier: MIT
// Lanes of 32 bits, which are pixels' too, and the marks that comparisons of them leave.
#ifndef VIREO_SIMD_INTS_H
#define VIREO_SIMD_INTS_H

#include "simd/words.h"

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

/// Bit i for lane i of a comparison's result.
inline std::uint32_t movemask(Ints lanes) {
#if defined(__AVX512DQ__)
    return _mm512_movepi32_mask((__m512i)lanes);
#elif defined(__AVX2__)
    return static_cast<std::uint32_t>(_mm256_movemask_ps((__m256)lanes));
#elif defined(__SSE2__)
    return static_cast<std::uint32_t>(_mm_movemask_ps((__m128)lanes));
#elif defined(__wasm_simd128__)
    return wasm_i32x4_bitmask((v128_t)lanes);
#elif defined(__aarch64__)
    return vaddvq_u32((uint32x4_t)lanes & uint32x4_t{1, 2, 4, 8});
#else
    std::uint32_t bits = 0;
    for (int i = 0; i < laneCount<Ints>; ++i) bits |= (lanes[i] & 1u) << i;
    return bits;
#endif
}

/// The way back: lane i is all ones where bit i is set, else 0.
inline Ints maskOf(std::uint32_t bits) {
    Pixels laneBits;
    for (int i = 0; i < laneCount<Pixels>; ++i) laneBits[i] = 1u << i;
    return (broadcast<Pixels>(bits) & laneBits) != 0;
}

/// Whether every lane of a comparison's result holds.
inline bool allTrue(Ints lanes) {
#if defined(__AVX512DQ__)
    return _mm512_movepi32_mask((__m512i)lanes) == 0xFFFF;
#elif defined(__AVX2__)
    return _mm256_movemask_epi8((__m256i)lanes) == -1;
#elif defined(__SSE2__)
    return _mm_movemask_epi8((__m128i)lanes) == 0xFFFF;
#elif defined(__wasm_simd128__)
    return wasm_i32x4_all_true((v128_t)lanes);
#elif defined(__aarch64__)
    return vminvq_u32((uint32x4_t)lanes) == 0xFFFFFFFF;
#else
    std::int32_t all = -1;
    for (int i = 0; i < laneCount<Ints>; ++i) all &= lanes[i];
    return all == -1;
#endif
}

#if defined(__AVX2__)
/// The lane at each index.
template <VectorOf<std::uint32_t> V>
V permute(V lanes, Vector<std::int32_t, sizeof(V)> indices) {
    if constexpr (sizeof(V) == 64) return (V)_mm512_permutexvar_epi32((__m512i)indices, (__m512i)lanes);
    if constexpr (sizeof(V) == 32) return (V)_mm256_permutevar8x32_epi32((__m256i)lanes, (__m256i)indices);
}
#endif

/// Narrower values in memory, one a lane. Compilers' own conversions of bytes take a register for each.
inline Ints loadExtended(const std::uint8_t* address) {
#if defined(__AVX512BW__)
    return (Ints)_mm512_maskz_cvtepu8_epi32(0xFFFF, (__m128i)load<Vector<std::uint8_t, 16>>(address));
#elif defined(__AVX2__)
    return (Ints)_mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(address)));
#elif defined(__SSE2__)
    const __m128i zero = _mm_setzero_si128();
    return (Ints)_mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_loadu_si32(address), zero), zero);
#elif defined(__aarch64__)
    std::uint32_t four;
    std::memcpy(&four, address, sizeof four);
    return (Ints)vmovl_u16(vget_low_u16(vmovl_u8((uint8x8_t)vdup_n_u32(four))));
#else
    return __builtin_convertvector((load<Vector<std::uint8_t, vectorBytes / 4>>(address)), Ints);
#endif
}

inline Ints loadExtended(const std::int16_t* address) {
#if defined(__AVX512BW__)
    return (Ints)_mm512_maskz_cvtepi16_epi32(0xFFFF, (__m256i)load<Vector<std::int16_t, 32>>(address));
#elif defined(__AVX2__)
    return (Ints)_mm256_cvtepi16_epi32((__m128i)load<Vector<std::int16_t, 16>>(address));
#elif defined(__SSE2__)
    const __m128i four = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(address));
    return (Ints)_mm_srai_epi32(_mm_unpacklo_epi16(four, four), 16);
#elif defined(__aarch64__)
    return (Ints)vmovl_s16(load<int16x4_t>(address));
#else
    return __builtin_convertvector((load<Vector<std::int16_t, vectorBytes / 2>>(address)), Ints);
#endif
}

#if defined(__AVX2__) && !defined(__AVX512BW__)
inline Vector<std::int16_t, 16> narrowed(Ints lanes) { return packs(lowerHalf(lanes), upperHalf(lanes)); }
#endif

/// The way back. Values fit the narrower type.
inline void storeNarrowed(std::int16_t* address, Ints lanes) {
#if defined(__AVX512BW__)
    store(address, (Vector<std::int16_t, 32>)_mm512_maskz_cvtsepi32_epi16(0xFFFF, (__m512i)lanes));
#elif defined(__AVX2__)
    store(address, narrowed(lanes));
#elif defined(__SSE2__)
    _mm_storel_epi64(reinterpret_cast<__m128i*>(address), _mm_packs_epi32((__m128i)lanes, (__m128i)lanes));
#elif defined(__aarch64__)
    store(address, vqmovn_s32((int32x4_t)lanes));
#else
    store(address, __builtin_convertvector(lanes, Vector<std::int16_t, vectorBytes / 2>));
#endif
}

inline void storeNarrowed(std::uint8_t* address, Ints lanes) {
#if defined(__AVX512BW__)
    store(address, (Vector<std::uint8_t, 16>)_mm512_maskz_cvtusepi32_epi8(0xFFFF, (__m512i)lanes));
#elif defined(__AVX2__)
    const Vector<std::int16_t, 16> words = narrowed(lanes);
    store(address, ((Vector<std::uint64_t, 16>)packus(words, words))[0]);
#elif defined(__SSE2__)
    const __m128i words = _mm_packs_epi32((__m128i)lanes, (__m128i)lanes);
    _mm_storeu_si32(address, _mm_packus_epi16(words, words));
#elif defined(__aarch64__)
    const int16x4_t words = vqmovn_s32((int32x4_t)lanes);
    store(address, ((uint32x2_t)vqmovun_s16(vcombine_s16(words, words)))[0]);
#else
    store(address, __builtin_convertvector(lanes, Vector<std::uint8_t, vectorBytes / 4>));
#endif
}

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
