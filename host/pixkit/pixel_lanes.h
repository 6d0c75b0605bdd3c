// SPDX-License-Identifier: MIT
// Registers of 4-byte pixels for the kernels that compilers do not vectorise by themselves.
#ifndef VIREO_HOST_PIXKIT_PIXEL_LANES_H
#define VIREO_HOST_PIXKIT_PIXEL_LANES_H

#if defined(VIREO_X86_KERNELS)

#if defined(__clang__)
#include <immintrin.h>
#else
// GCC 12 takes the undefined operands inside its 512-bit functions for a fault of their callers.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#endif

#include <cstdint>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

/// Four pixels.
struct Lanes4 {
    using Integers = __m128i;
    using Floats = __m128;
    static constexpr int pixels = 4;

    static Integers load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
    static Integers gather(const std::uint8_t* const* addresses) {
        const auto pair = [&](int i) {
            return _mm_unpacklo_epi32(_mm_loadu_si32(addresses[i]), _mm_loadu_si32(addresses[i + 1]));
        };
        return _mm_unpacklo_epi64(pair(0), pair(2));
    }
    static void store(void* to, Integers v) { _mm_storeu_si128(static_cast<__m128i*>(to), v); }
    static Integers all(std::int32_t value) { return _mm_set1_epi32(value); }
    static Floats all(float value) { return _mm_set1_ps(value); }
    static Integers add(Integers a, Integers b) { return _mm_add_epi32(a, b); }
    static Integers subtract(Integers a, Integers b) { return _mm_sub_epi32(a, b); }
    static Integers upperHalves(Integers v) { return _mm_slli_epi32(v, 16); }
    static Integers low(Integers a, Integers b) { return _mm_unpacklo_epi8(a, b); }
    static Integers high(Integers a, Integers b) { return _mm_unpackhi_epi8(a, b); }
    template <int lane>
    static Integers repeat(Integers v) {
        return _mm_shuffle_epi32(v, lane * 0x55);
    }
    static Integers sumOfProducts(Integers a, Integers b) { return _mm_madd_epi16(a, b); }
    static Floats toFloat(Integers v) { return _mm_cvtepi32_ps(v); }
    static Floats multiply(Floats a, Floats b) { return _mm_mul_ps(a, b); }
    static Integers truncate(Floats v) { return _mm_cvttps_epi32(v); }
    static Integers toShorts(Integers a, Integers b) { return _mm_packs_epi32(a, b); }
    static Integers toBytes(Integers a, Integers b) { return _mm_packus_epi16(a, b); }
};

#if defined(__AVX2__)
/// Eight pixels; bytes interleave and narrow within each half.
struct Lanes8 {
    using Integers = __m256i;
    using Floats = __m256;
    static constexpr int pixels = 8;

    static Integers load(const void* from) { return _mm256_loadu_si256(static_cast<const __m256i*>(from)); }
    static Integers gather(const std::uint8_t* const* addresses) {
        return _mm256_set_m128i(Lanes4::gather(addresses + 4), Lanes4::gather(addresses));
    }
    static void store(void* to, Integers v) { _mm256_storeu_si256(static_cast<__m256i*>(to), v); }
    static Integers all(std::int32_t value) { return _mm256_set1_epi32(value); }
    static Floats all(float value) { return _mm256_set1_ps(value); }
    static Integers add(Integers a, Integers b) { return _mm256_add_epi32(a, b); }
    static Integers subtract(Integers a, Integers b) { return _mm256_sub_epi32(a, b); }
    static Integers upperHalves(Integers v) { return _mm256_slli_epi32(v, 16); }
    static Integers low(Integers a, Integers b) { return _mm256_unpacklo_epi8(a, b); }
    static Integers high(Integers a, Integers b) { return _mm256_unpackhi_epi8(a, b); }
    template <int lane>
    static Integers repeat(Integers v) {
        return _mm256_shuffle_epi32(v, lane * 0x55);
    }
    static Integers sumOfProducts(Integers a, Integers b) { return _mm256_madd_epi16(a, b); }
    static Floats toFloat(Integers v) { return _mm256_cvtepi32_ps(v); }
    static Floats multiply(Floats a, Floats b) { return _mm256_mul_ps(a, b); }
    static Integers truncate(Floats v) { return _mm256_cvttps_epi32(v); }
    static Integers toShorts(Integers a, Integers b) { return _mm256_packs_epi32(a, b); }
    static Integers toBytes(Integers a, Integers b) { return _mm256_packus_epi16(a, b); }
    static Integers pick(Integers v, Integers indices) { return _mm256_permutevar8x32_epi32(v, indices); }
};
#endif

#if defined(__AVX512BW__)
/// Sixteen pixels; bytes interleave and narrow within each quarter.
struct Lanes16 {
    using Integers = __m512i;
    using Floats = __m512;
    static constexpr int pixels = 16;

    static Integers load(const void* from) { return _mm512_loadu_si512(from); }
    static Integers gather(const std::uint8_t* const* addresses) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(Lanes8::gather(addresses)),
                                  Lanes8::gather(addresses + 8), 1);
    }
    static void store(void* to, Integers v) { _mm512_storeu_si512(to, v); }
    static Integers all(std::int32_t value) { return _mm512_set1_epi32(value); }
    static Floats all(float value) { return _mm512_set1_ps(value); }
    static Integers add(Integers a, Integers b) { return _mm512_add_epi32(a, b); }
    static Integers subtract(Integers a, Integers b) { return _mm512_sub_epi32(a, b); }
    static Integers upperHalves(Integers v) { return _mm512_slli_epi32(v, 16); }
    static Integers low(Integers a, Integers b) { return _mm512_unpacklo_epi8(a, b); }
    static Integers high(Integers a, Integers b) { return _mm512_unpackhi_epi8(a, b); }
    template <int lane>
    static Integers repeat(Integers v) {
        return _mm512_shuffle_epi32(v, static_cast<_MM_PERM_ENUM>(lane * 0x55));
    }
    static Integers sumOfProducts(Integers a, Integers b) { return _mm512_madd_epi16(a, b); }
    static Floats toFloat(Integers v) { return _mm512_cvtepi32_ps(v); }
    static Floats multiply(Floats a, Floats b) { return _mm512_mul_ps(a, b); }
    static Integers truncate(Floats v) { return _mm512_cvttps_epi32(v); }
    static Integers toShorts(Integers a, Integers b) { return _mm512_packs_epi32(a, b); }
    static Integers toBytes(Integers a, Integers b) { return _mm512_packus_epi16(a, b); }
    static Integers pick(Integers v, Integers indices) { return _mm512_permutexvar_epi32(indices, v); }
};
#endif

}  // namespace
}  // namespace VIREO_KERNEL_NAMESPACE

#elif defined(__wasm_simd128__)

#include <wasm_simd128.h>

#include <cstdint>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

/// Four pixels.
struct Lanes4 {
    using Integers = v128_t;
    using Floats = v128_t;
    static constexpr int pixels = 4;

    static Integers load(const void* from) { return wasm_v128_load(from); }
    static Integers gather(const std::uint8_t* const* addresses) {
        v128_t four = wasm_v128_load32_zero(addresses[0]);
        four = wasm_v128_load32_lane(addresses[1], four, 1);
        four = wasm_v128_load32_lane(addresses[2], four, 2);
        return wasm_v128_load32_lane(addresses[3], four, 3);
    }
    static void store(void* to, Integers v) { wasm_v128_store(to, v); }
    static Integers all(std::int32_t value) { return wasm_i32x4_splat(value); }
    static Floats all(float value) { return wasm_f32x4_splat(value); }
    static Integers add(Integers a, Integers b) { return wasm_i32x4_add(a, b); }
    static Integers subtract(Integers a, Integers b) { return wasm_i32x4_sub(a, b); }
    static Integers upperHalves(Integers v) { return wasm_i32x4_shl(v, 16); }
    static Integers low(Integers a, Integers b) {
        return wasm_i8x16_shuffle(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23);
    }
    static Integers high(Integers a, Integers b) {
        return wasm_i8x16_shuffle(a, b, 8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    }
    template <int lane>
    static Integers repeat(Integers v) {
        return wasm_i32x4_shuffle(v, v, lane, lane, lane, lane);
    }
    static Integers sumOfProducts(Integers a, Integers b) { return wasm_i32x4_dot_i16x8(a, b); }
    static Floats toFloat(Integers v) { return wasm_f32x4_convert_i32x4(v); }
    static Floats multiply(Floats a, Floats b) { return wasm_f32x4_mul(a, b); }
    static Integers truncate(Floats v) { return wasm_i32x4_trunc_sat_f32x4(v); }
    static Integers toShorts(Integers a, Integers b) { return wasm_i16x8_narrow_i32x4(a, b); }
    static Integers toBytes(Integers a, Integers b) { return wasm_u8x16_narrow_i16x8(a, b); }
};

}  // namespace
}  // namespace VIREO_KERNEL_NAMESPACE

#endif

#endif
