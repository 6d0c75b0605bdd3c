// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_BYTE_LOOKUP_H
#define VIREO_FILTERS_WARP_BYTE_LOOKUP_H

#include <cstdint>
#include <cstring>
#if defined(__AVX512VBMI__)
#include <immintrin.h>
#endif

namespace VIREO_KERNEL_NAMESPACE {

/// Each byte becomes its entry in a table of 256. Where bytes can be permuted over 64 lanes the table stays
/// in four registers, several times as fast as a load for each byte.
inline void lookUp(const std::uint8_t* table, std::uint8_t* bytes, std::int64_t count) {
    std::int64_t i = 0;
#if defined(__AVX512VBMI__)
    using Vector [[gnu::vector_size(64)]] = std::uint8_t;
    Vector quarters[4];
    std::memcpy(quarters, table, sizeof quarters);
    for (; i + 64 <= count; i += 64) {
        Vector index;
        std::memcpy(&index, bytes + i, sizeof index);
        // A shuffle of two vectors takes its indices modulo 128.
        const auto shuffled = [&](const Vector& first, const Vector& second) {
            return (Vector)_mm512_permutex2var_epi8((__m512i)first, (__m512i)index, (__m512i)second);
        };
        const Vector low = shuffled(quarters[0], quarters[1]);
        const Vector high = shuffled(quarters[2], quarters[3]);
        const Vector result = index < 128 ? low : high;
        std::memcpy(bytes + i, &result, sizeof result);
    }
#endif
    for (; i < count; ++i) bytes[i] = table[bytes[i]];
}

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
