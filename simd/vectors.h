// SPDX-License-Identifier: MIT
// Vectors for kernel files, as wide as the instruction set that the file is compiled for: their types, and
// what is the same for every kind of lane. Arithmetic, comparisons and shifts are the operators; a cast sees
// the same bits as lanes of another kind. The other headers of this folder add what operators cannot say.
//
// Functions that sets compile differently must not be taken for each other, so that names stand in an inline
// namespace of the set.
#ifndef VIREO_SIMD_VECTORS_H
#define VIREO_SIMD_VECTORS_H

#if !defined(VIREO_KERNEL_NAMESPACE)
#error "Vectors are for kernel files."
#endif

#include <concepts>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

// Where vectors have all of their operations; elsewhere kernels that need those run plain loops.
#if defined(__SSE2__) || defined(__wasm_simd128__) || defined(__aarch64__)
#define VIREO_SIMD_COMPLETE
#endif
// Where the bytes of a vector can be put anywhere in it.
#if defined(__AVX2__) || defined(__wasm_simd128__) || defined(__aarch64__)
#define VIREO_SIMD_SHUFFLE
#endif

#if defined(__wasm_simd128__)
#include <wasm_simd128.h>
#elif defined(__aarch64__)
#include <arm_neon.h>
#elif defined(__SSE2__) && defined(__clang__)
#include <immintrin.h>
#elif defined(__SSE2__)
// GCC 12 takes the undefined operands inside its 512-bit functions for a fault of their callers.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#endif

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

#if defined(__AVX512BW__)
inline constexpr int vectorBytes = 64;
#elif defined(__AVX2__)
inline constexpr int vectorBytes = 32;
#else
inline constexpr int vectorBytes = 16;
#endif

template <class Lane, int bytes>
struct VectorType {
    typedef Lane Type __attribute__((vector_size(bytes)));
};

/// A width of its own is for where wider vectors were measured to be no faster, or have too many lanes.
template <class Lane, int bytes = vectorBytes>
using Vector = typename VectorType<Lane, bytes>::Type;

using Bytes = Vector<std::uint8_t>;
using SignedBytes = Vector<std::int8_t>;
using Words = Vector<std::uint16_t>;
using SignedWords = Vector<std::int16_t>;
using Pixels = Vector<std::uint32_t>;
using Ints = Vector<std::int32_t>;
using Floats = Vector<float>;
using Doubles = Vector<double>;

/// Any width.
template <class V, class Lane>
concept VectorOf = std::same_as<V, Vector<Lane, sizeof(V)>>;

template <class V>
using LaneOf = std::remove_reference_t<decltype(std::declval<V&>()[0])>;

template <class V>
inline constexpr int laneCount = sizeof(V) / sizeof(LaneOf<V>);

template <class V>
inline constexpr std::make_integer_sequence<int, laneCount<V>> lanesOf;

/// From and to any address.
template <class V>
V load(const void* address) {
    V vector;
    std::memcpy(&vector, address, sizeof vector);
    return vector;
}

template <class V>
void store(void* address, V vector) {
    std::memcpy(address, &vector, sizeof vector);
}

/// Past the caches, to an address that is a multiple of the vector's size; fencePastCaches() belongs behind.
template <class V>
void stream(void* address, V vector) {
#if defined(__SSE2__)
    if constexpr (sizeof(V) == 64) {
        _mm512_stream_si512(static_cast<__m512i*>(address), (__m512i)vector);
    } else if constexpr (sizeof(V) == 32) {
        _mm256_stream_si256(static_cast<__m256i*>(address), (__m256i)vector);
    } else if constexpr (sizeof(V) == 16) {
        _mm_stream_si128(static_cast<__m128i*>(address), (__m128i)vector);
    } else {
        _mm_stream_si64(static_cast<long long*>(address), static_cast<long long>(vector));
    }
#else
    store(address, vector);
#endif
}

/// To an address that is such a multiple if it goes past the caches.
template <bool pastCaches, class V>
void storeOrStream(void* address, V vector) {
    if constexpr (pastCaches) {
        stream(address, vector);
    } else {
        store(address, vector);
    }
}

inline constexpr int cacheLineBytes = 64;

/// Asks for what a walk up memory will need soon, as many bytes as one of its steps takes. Processors read
/// ahead by themselves, but not from one page of memory to the next.
template <int bytes>
void prefetchAhead(const void* address) {
    constexpr int ahead = 2048;
    for (int line = 0; line < bytes; line += cacheLineBytes) {
        __builtin_prefetch(static_cast<const std::uint8_t*>(address) + ahead + line);
    }
}

/// Not as a sum with 0, which would make 0 of -0.
template <class V>
V broadcast(LaneOf<V> value) {
    return value - V{};
}

#if defined(__AVX2__)

/// Two vectors of 16 bytes as one, and its parts.
template <class V>
Vector<LaneOf<V>, 32> join(V low, V high) {
    return (Vector<LaneOf<V>, 32>)_mm256_set_m128i((__m128i)high, (__m128i)low);
}

template <class V>
Vector<LaneOf<V>, 16> lowerHalf(V vector) {
    return (Vector<LaneOf<V>, 16>)_mm256_castsi256_si128((__m256i)vector);
}

template <class V>
Vector<LaneOf<V>, 16> upperHalf(V vector) {
    return (Vector<LaneOf<V>, 16>)_mm256_extracti128_si256((__m256i)vector, 1);
}

/// 16 bytes twice.
inline Vector<std::uint8_t, 32> loadTwice(const std::uint8_t* address) {
    return (Vector<std::uint8_t, 32>)_mm256_broadcastsi128_si256(
        (__m128i)load<Vector<std::uint8_t, 16>>(address));
}

#endif

// The next three work within every 16 bytes.

template <class V, int... i>
V unpacklo(V a, V b, std::integer_sequence<int, i...>) {
    constexpr int lanes = 16 / sizeof(LaneOf<V>);
    return __builtin_shufflevector(a, b, (i / lanes * lanes + i % lanes / 2 + i % 2 * laneCount<V>)...);
}

template <class V, int... i>
V unpackhi(V a, V b, std::integer_sequence<int, i...>) {
    constexpr int lanes = 16 / sizeof(LaneOf<V>);
    return __builtin_shufflevector(a, b,
                                   (i / lanes * lanes + (lanes + i % lanes) / 2 + i % 2 * laneCount<V>)...);
}

template <int lane, class V, int... i>
V repeat(V vector, std::integer_sequence<int, i...>) {
    constexpr int lanes = 16 / sizeof(LaneOf<V>);
    return __builtin_shufflevector(vector, vector, (i / lanes * lanes + lane)...);
}

/// Lanes of the lower halves, by turns a's and b's.
template <class V>
V unpacklo(V a, V b) {
    return unpacklo(a, b, lanesOf<V>);
}

template <class V>
V unpackhi(V a, V b) {
    return unpackhi(a, b, lanesOf<V>);
}

/// One lane in place of all.
template <int lane, class V>
V repeat(V vector) {
    return repeat<lane>(vector, lanesOf<V>);
}

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
