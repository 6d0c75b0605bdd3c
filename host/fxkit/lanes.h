// SPDX-License-Identifier: MIT
// As many single-precision values as a register of the instruction set holds. Only for kernel files: the
// compiler's own conversions of bytes to floats go through one register a byte.
#ifndef VIREO_HOST_FXKIT_LANES_H
#define VIREO_HOST_FXKIT_LANES_H

#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace VIREO_KERNEL_NAMESPACE {
namespace {

#if defined(__AVX512F__)

using Lanes = __m512;
constexpr int laneCount = 16;

// The masks are full. The forms without a mask begin with an undefined register, of which GCC 12 warns.
constexpr __mmask16 all = 0xFFFF;

inline __m512i widened(const std::uint8_t* values) {
    return _mm512_maskz_cvtepu8_epi32(all, _mm_loadu_si128(reinterpret_cast<const __m128i*>(values)));
}
inline __m512i widened(const std::int16_t* values) {
    return _mm512_maskz_cvtepi16_epi32(all, _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values)));
}
template <class Value>
Lanes load(const Value* values) {
    return _mm512_maskz_cvtepi32_ps(all, widened(values));
}
template <class Value>
Lanes loadDifference(const Value* a, const Value* b) {
    return _mm512_maskz_cvtepi32_ps(all, _mm512_sub_epi32(widened(a), widened(b)));
}
inline Lanes load(const float* values) { return _mm512_loadu_ps(values); }
inline Lanes repeated(float value) { return _mm512_set1_ps(value); }
inline void store(float* to, Lanes values) { _mm512_storeu_ps(to, values); }
inline void storeTruncated(std::uint8_t* to, Lanes values) {
    const __m512i integers = _mm512_maskz_cvttps_epi32(all, values);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm512_maskz_cvtusepi32_epi8(all, integers));
}
inline void storeTruncated(std::int16_t* to, Lanes values) {
    const __m512i integers = _mm512_maskz_cvttps_epi32(all, values);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(to), _mm512_maskz_cvtsepi32_epi16(all, integers));
}

#elif defined(__AVX2__)

using Lanes = __m256;
constexpr int laneCount = 8;

inline __m256i widened(const std::uint8_t* values) {
    return _mm256_cvtepu8_epi32(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(values)));
}
inline __m256i widened(const std::int16_t* values) {
    return _mm256_cvtepi16_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(values)));
}
template <class Value>
Lanes load(const Value* values) {
    return _mm256_cvtepi32_ps(widened(values));
}
template <class Value>
Lanes loadDifference(const Value* a, const Value* b) {
    return _mm256_cvtepi32_ps(_mm256_sub_epi32(widened(a), widened(b)));
}
inline Lanes load(const float* values) { return _mm256_loadu_ps(values); }
inline Lanes repeated(float value) { return _mm256_set1_ps(value); }
inline void store(float* to, Lanes values) { _mm256_storeu_ps(to, values); }
inline __m128i truncated(Lanes values) {
    const __m256i integers = _mm256_cvttps_epi32(values);
    return _mm_packs_epi32(_mm256_castsi256_si128(integers), _mm256_extracti128_si256(integers, 1));
}
inline void storeTruncated(std::uint8_t* to, Lanes values) {
    const __m128i words = truncated(values);
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(words, words));
}
inline void storeTruncated(std::int16_t* to, Lanes values) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), truncated(values));
}

#elif defined(__SSE2__)

using Lanes = __m128;
constexpr int laneCount = 4;

inline __m128i widened(const std::uint8_t* values) {
    int four;
    std::memcpy(&four, values, sizeof(four));
    const __m128i zero = _mm_setzero_si128();
    return _mm_unpacklo_epi16(_mm_unpacklo_epi8(_mm_cvtsi32_si128(four), zero), zero);
}
inline __m128i widened(const std::int16_t* values) {
    const __m128i four = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(values));
    return _mm_srai_epi32(_mm_unpacklo_epi16(four, four), 16);
}
template <class Value>
Lanes load(const Value* values) {
    return _mm_cvtepi32_ps(widened(values));
}
template <class Value>
Lanes loadDifference(const Value* a, const Value* b) {
    return _mm_cvtepi32_ps(_mm_sub_epi32(widened(a), widened(b)));
}
inline Lanes load(const float* values) { return _mm_loadu_ps(values); }
inline Lanes repeated(float value) { return _mm_set1_ps(value); }
inline void store(float* to, Lanes values) { _mm_storeu_ps(to, values); }
inline __m128i truncated(Lanes values) {
    const __m128i integers = _mm_cvttps_epi32(values);
    return _mm_packs_epi32(integers, integers);
}
inline void storeTruncated(std::uint8_t* to, Lanes values) {
    const __m128i words = truncated(values);
    const int four = _mm_cvtsi128_si32(_mm_packus_epi16(words, words));
    std::memcpy(to, &four, sizeof(four));
}
inline void storeTruncated(std::int16_t* to, Lanes values) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(to), truncated(values));
}

#else

constexpr int laneCount = 4;
template <class Value>
using Four = Value __attribute__((vector_size(laneCount * sizeof(Value))));
using Lanes = Four<float>;

template <class Value>
Lanes load(const Value* values) {
    Four<Value> four;
    std::memcpy(&four, values, sizeof(four));
    return __builtin_convertvector(four, Lanes);
}
template <class Value>
Lanes loadDifference(const Value* a, const Value* b) {
    return load(a) - load(b);
}
inline Lanes repeated(float value) { return Lanes{value, value, value, value}; }
inline void store(float* to, Lanes values) { std::memcpy(to, &values, sizeof(values)); }
template <class Value>
void storeTruncated(Value* to, Lanes values) {
    const auto four =
        __builtin_convertvector(__builtin_convertvector(values, Four<std::int32_t>), Four<Value>);
    std::memcpy(to, &four, sizeof(four));
}

#endif

}  // namespace
}  // namespace VIREO_KERNEL_NAMESPACE

#endif
