// SPDX-License-Identifier: MIT
#ifndef VIREO_SIMD_DOUBLES_H
#define VIREO_SIMD_DOUBLES_H

#include "simd/vectors.h"

#include <cmath>

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

/// As many as there are doubles.
using HalfInts = Vector<std::int32_t, vectorBytes / 2>;

/// Truncated toward zero. Values fit 32 bits.
inline HalfInts toInts(Doubles values) {
#if defined(__AVX512BW__)
    // The forms without a mask make this compiler warn of its own header.
    return (HalfInts)_mm512_maskz_cvttpd_epi32(0xFF, (__m512d)values);
#elif defined(__AVX2__)
    return (HalfInts)_mm256_cvttpd_epi32((__m256d)values);
#elif defined(__wasm_simd128__)
    const v128_t integers = wasm_i32x4_trunc_sat_f64x2_zero((v128_t)values);
    return load<HalfInts>(&integers);
#elif defined(__aarch64__)
    return (HalfInts)vmovn_s64(vcvtq_s64_f64((float64x2_t)values));
#else
    HalfInts result;
    for (int i = 0; i < laneCount<HalfInts>; ++i) result[i] = static_cast<std::int32_t>(values[i]);
    return result;
#endif
}

/// The same, as doubles.
inline Doubles trunc(Doubles values) {
#if defined(__AVX512BW__)
    return (Doubles)_mm512_maskz_roundscale_pd(0xFF, (__m512d)values, _MM_FROUND_TO_ZERO);
#elif defined(__AVX2__)
    return (Doubles)_mm256_round_pd((__m256d)values, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
#elif defined(__SSE2__)
    return (Doubles)_mm_cvtepi32_pd(_mm_cvttpd_epi32((__m128d)values));
#elif defined(__wasm_simd128__)
    return (Doubles)wasm_f64x2_trunc((v128_t)values);
#elif defined(__aarch64__)
    return (Doubles)vrndq_f64((float64x2_t)values);
#else
    return __builtin_convertvector(toInts(values), Doubles);
#endif
}

inline Doubles sqrt(Doubles values) {
#if defined(__AVX512BW__)
    return (Doubles)_mm512_maskz_sqrt_pd(0xFF, (__m512d)values);
#elif defined(__AVX2__)
    return (Doubles)_mm256_sqrt_pd((__m256d)values);
#elif defined(__SSE2__)
    return (Doubles)_mm_sqrt_pd((__m128d)values);
#elif defined(__wasm_simd128__)
    return (Doubles)wasm_f64x2_sqrt((v128_t)values);
#elif defined(__aarch64__)
    return (Doubles)vsqrtq_f64((float64x2_t)values);
#else
    for (int i = 0; i < laneCount<Doubles>; ++i) values[i] = std::sqrt(values[i]);
    return values;
#endif
}

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
