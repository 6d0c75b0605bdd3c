// SPDX-License-Identifier: MIT
// Vectors of doubles for kernel files, as wide as the instruction set that the file is compiled for.
#ifndef VIREO_FILTERS_LENS_DOUBLE_VECTORS_H
#define VIREO_FILTERS_LENS_DOUBLE_VECTORS_H

#include "framework/pixel_vectors.h"

#include <cmath>

namespace VIREO_KERNEL_NAMESPACE {

typedef double DoubleVector __attribute__((vector_size(vectorBytes)));
typedef std::int32_t HalfIntVector __attribute__((vector_size(vectorBytes / 2)));

inline constexpr std::int32_t vectorDoubles = vectorBytes / 8;

inline DoubleVector loadDoubles(const double* address) {
    DoubleVector values;
    std::memcpy(&values, address, sizeof values);
    return values;
}

/// Truncated toward zero. Values fit 32 bits.
inline HalfIntVector truncated(DoubleVector values) {
#if defined(__AVX512BW__)
    // The forms without a mask make this compiler warn of its own header.
    return (HalfIntVector)_mm512_maskz_cvttpd_epi32(0xFF, (__m512d)values);
#elif defined(__AVX2__)
    return (HalfIntVector)_mm256_cvttpd_epi32((__m256d)values);
#elif defined(__wasm_simd128__)
    const v128_t integers = wasm_i32x4_trunc_sat_f64x2_zero((v128_t)values);
    HalfIntVector result;
    std::memcpy(&result, &integers, sizeof result);
    return result;
#else
    HalfIntVector result;
    for (int i = 0; i < vectorDoubles; ++i) result[i] = static_cast<std::int32_t>(values[i]);
    return result;
#endif
}

/// The same, as doubles.
inline DoubleVector whole(DoubleVector values) {
#if defined(__AVX512BW__)
    return (DoubleVector)_mm512_maskz_roundscale_pd(0xFF, (__m512d)values, _MM_FROUND_TO_ZERO);
#elif defined(__AVX2__)
    return (DoubleVector)_mm256_round_pd((__m256d)values, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
#elif defined(__SSE2__)
    return (DoubleVector)_mm_cvtepi32_pd(_mm_cvttpd_epi32((__m128d)values));
#elif defined(__wasm_simd128__)
    return (DoubleVector)wasm_f64x2_trunc((v128_t)values);
#else
    return __builtin_convertvector(truncated(values), DoubleVector);
#endif
}

inline DoubleVector squareRoot(DoubleVector values) {
#if defined(__AVX512BW__)
    return (DoubleVector)_mm512_maskz_sqrt_pd(0xFF, (__m512d)values);
#elif defined(__AVX2__)
    return (DoubleVector)_mm256_sqrt_pd((__m256d)values);
#elif defined(__SSE2__)
    return (DoubleVector)_mm_sqrt_pd((__m128d)values);
#elif defined(__wasm_simd128__)
    return (DoubleVector)wasm_f64x2_sqrt((v128_t)values);
#else
    for (int i = 0; i < vectorDoubles; ++i) values[i] = std::sqrt(values[i]);
    return values;
#endif
}

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
