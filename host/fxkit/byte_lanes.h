// SPDX-License-Identifier: MIT
// As many bytes as a register of the instruction set holds, and the steps from bytes by way of pairwise sums
// to whole quotients and back. Interleaving works within 16 bytes; joining puts the halves back in order.
// Only for kernel files.
#ifndef VIREO_HOST_FXKIT_BYTE_LANES_H
#define VIREO_HOST_FXKIT_BYTE_LANES_H

#if defined(__wasm_simd128__)
#include <wasm_simd128.h>
#else
#include <immintrin.h>
#endif
#include <cstdint>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

#if defined(__AVX512BW__)

using Bytes = __m512i;

inline Bytes loadBytes(const std::uint8_t* bytes) { return _mm512_loadu_si512(bytes); }
inline void storeBytes(std::uint8_t* to, Bytes bytes) { _mm512_storeu_si512(to, bytes); }
inline Bytes repeatedWord(int word) { return _mm512_set1_epi16(static_cast<short>(word)); }
inline Bytes interleavedLow8(Bytes a, Bytes b) { return _mm512_unpacklo_epi8(a, b); }
inline Bytes interleavedHigh8(Bytes a, Bytes b) { return _mm512_unpackhi_epi8(a, b); }
inline Bytes interleavedLow16(Bytes a, Bytes b) { return _mm512_unpacklo_epi16(a, b); }
inline Bytes interleavedHigh16(Bytes a, Bytes b) { return _mm512_unpackhi_epi16(a, b); }
inline Bytes weighedPairs(Bytes bytes, Bytes weights) { return _mm512_maddubs_epi16(bytes, weights); }
inline Bytes addedPairs(Bytes words) { return _mm512_madd_epi16(words, _mm512_set1_epi16(1)); }
inline Bytes highProducts16(Bytes a, Bytes b) { return _mm512_mulhi_epu16(a, b); }
inline Bytes added32(Bytes a, Bytes b) { return _mm512_add_epi32(a, b); }

inline Bytes quotients(Bytes dividends, float reciprocal) {
    const __m512 values = _mm512_maskz_cvtepi32_ps(0xFFFF, dividends);
    const __m512 half = _mm512_or_ps(_mm512_and_ps(values, _mm512_set1_ps(-0.0F)), _mm512_set1_ps(0.5F));
    return _mm512_maskz_cvttps_epi32(0xFFFF, (values + half) * _mm512_set1_ps(reciprocal));
}
inline Bytes joined32(Bytes a, Bytes b) { return _mm512_packs_epi32(a, b); }
inline Bytes joined16(Bytes a, Bytes b) { return _mm512_packus_epi16(a, b); }
inline Bytes addedSaturated16(Bytes a, Bytes b) { return _mm512_adds_epi16(a, b); }

#elif defined(__AVX2__)

using Bytes = __m256i;

inline Bytes loadBytes(const std::uint8_t* bytes) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(bytes));
}
inline void storeBytes(std::uint8_t* to, Bytes bytes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), bytes);
}
inline Bytes repeatedWord(int word) { return _mm256_set1_epi16(static_cast<short>(word)); }
inline Bytes interleavedLow8(Bytes a, Bytes b) { return _mm256_unpacklo_epi8(a, b); }
inline Bytes interleavedHigh8(Bytes a, Bytes b) { return _mm256_unpackhi_epi8(a, b); }
inline Bytes interleavedLow16(Bytes a, Bytes b) { return _mm256_unpacklo_epi16(a, b); }
inline Bytes interleavedHigh16(Bytes a, Bytes b) { return _mm256_unpackhi_epi16(a, b); }
inline Bytes weighedPairs(Bytes bytes, Bytes weights) { return _mm256_maddubs_epi16(bytes, weights); }
inline Bytes addedPairs(Bytes words) { return _mm256_madd_epi16(words, _mm256_set1_epi16(1)); }
inline Bytes highProducts16(Bytes a, Bytes b) { return _mm256_mulhi_epu16(a, b); }
inline Bytes added32(Bytes a, Bytes b) { return _mm256_add_epi32(a, b); }
inline Bytes quotients(Bytes dividends, float reciprocal) {
    const __m256 values = _mm256_cvtepi32_ps(dividends);
    const __m256 half = _mm256_or_ps(_mm256_and_ps(values, _mm256_set1_ps(-0.0F)), _mm256_set1_ps(0.5F));
    return _mm256_cvttps_epi32((values + half) * _mm256_set1_ps(reciprocal));
}
inline Bytes joined32(Bytes a, Bytes b) { return _mm256_packs_epi32(a, b); }
inline Bytes joined16(Bytes a, Bytes b) { return _mm256_packus_epi16(a, b); }
inline Bytes addedSaturated16(Bytes a, Bytes b) { return _mm256_adds_epi16(a, b); }

#elif defined(__wasm_simd128__)

using Bytes = v128_t;

inline Bytes loadBytes(const std::uint8_t* bytes) { return wasm_v128_load(bytes); }
inline void storeBytes(std::uint8_t* to, Bytes bytes) { wasm_v128_store(to, bytes); }
inline Bytes repeatedWord(int word) { return wasm_i16x8_splat(static_cast<short>(word)); }
inline Bytes interleavedLow8(Bytes a, Bytes b) {
    return wasm_i8x16_shuffle(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
}
inline Bytes interleavedHigh8(Bytes a, Bytes b) {
    return wasm_i8x16_shuffle(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
}
inline Bytes interleavedLow16(Bytes a, Bytes b) { return wasm_i16x8_shuffle(a, b, 0, 8, 1, 9, 2, 10, 3, 11); }
inline Bytes interleavedHigh16(Bytes a, Bytes b) {
    return wasm_i16x8_shuffle(a, b, 4, 12, 5, 13, 6, 14, 7, 15);
}
inline Bytes weighedPairs(Bytes bytes, Bytes weights) {
    const Bytes first = wasm_i16x8_mul(wasm_v128_and(bytes, repeatedWord(0xFF)),
                                       wasm_i16x8_shr(wasm_i16x8_shl(weights, 8), 8));
    return wasm_i16x8_add(first, wasm_i16x8_mul(wasm_u16x8_shr(bytes, 8), wasm_i16x8_shr(weights, 8)));
}
inline Bytes addedPairs(Bytes words) { return wasm_i32x4_extadd_pairwise_i16x8(words); }
inline Bytes highProducts16(Bytes a, Bytes b) {
    return wasm_i16x8_shuffle(wasm_u32x4_extmul_low_u16x8(a, b), wasm_u32x4_extmul_high_u16x8(a, b), 1, 3, 5,
                              7, 9, 11, 13, 15);
}
inline Bytes added32(Bytes a, Bytes b) { return wasm_i32x4_add(a, b); }
inline Bytes quotients(Bytes dividends, float reciprocal) {
    const v128_t values = wasm_f32x4_convert_i32x4(dividends);
    const v128_t half = wasm_v128_or(wasm_v128_and(values, wasm_f32x4_splat(-0.0F)), wasm_f32x4_splat(0.5F));
    return wasm_i32x4_trunc_sat_f32x4(
        wasm_f32x4_mul(wasm_f32x4_add(values, half), wasm_f32x4_splat(reciprocal)));
}
inline Bytes joined32(Bytes a, Bytes b) { return wasm_i16x8_narrow_i32x4(a, b); }
inline Bytes joined16(Bytes a, Bytes b) { return wasm_u8x16_narrow_i16x8(a, b); }
inline Bytes addedSaturated16(Bytes a, Bytes b) { return wasm_i16x8_add_sat(a, b); }

#else

using Bytes = __m128i;

inline Bytes loadBytes(const std::uint8_t* bytes) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
}
inline void storeBytes(std::uint8_t* to, Bytes bytes) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}
inline Bytes repeatedWord(int word) { return _mm_set1_epi16(static_cast<short>(word)); }
inline Bytes interleavedLow8(Bytes a, Bytes b) { return _mm_unpacklo_epi8(a, b); }
inline Bytes interleavedHigh8(Bytes a, Bytes b) { return _mm_unpackhi_epi8(a, b); }
inline Bytes interleavedLow16(Bytes a, Bytes b) { return _mm_unpacklo_epi16(a, b); }
inline Bytes interleavedHigh16(Bytes a, Bytes b) { return _mm_unpackhi_epi16(a, b); }
inline Bytes weighedPairs(Bytes bytes, Bytes weights) {
    const Bytes first = _mm_and_si128(bytes, _mm_set1_epi16(0xFF));
    const Bytes second = _mm_srli_epi16(bytes, 8);
    return _mm_add_epi16(_mm_mullo_epi16(first, _mm_srai_epi16(_mm_slli_epi16(weights, 8), 8)),
                         _mm_mullo_epi16(second, _mm_srai_epi16(weights, 8)));
}
inline Bytes addedPairs(Bytes words) { return _mm_madd_epi16(words, _mm_set1_epi16(1)); }
inline Bytes highProducts16(Bytes a, Bytes b) { return _mm_mulhi_epu16(a, b); }
inline Bytes added32(Bytes a, Bytes b) { return _mm_add_epi32(a, b); }
inline Bytes quotients(Bytes dividends, float reciprocal) {
    const __m128 values = _mm_cvtepi32_ps(dividends);
    const __m128 half = _mm_or_ps(_mm_and_ps(values, _mm_set1_ps(-0.0F)), _mm_set1_ps(0.5F));
    return _mm_cvttps_epi32((values + half) * _mm_set1_ps(reciprocal));
}
inline Bytes joined32(Bytes a, Bytes b) { return _mm_packs_epi32(a, b); }
inline Bytes joined16(Bytes a, Bytes b) { return _mm_packus_epi16(a, b); }
inline Bytes addedSaturated16(Bytes a, Bytes b) { return _mm_adds_epi16(a, b); }

#endif

}  // namespace
}  // namespace VIREO_KERNEL_NAMESPACE

#endif
