// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_BYTE_LOOKUP_H
#define VIREO_FILTERS_WARP_BYTE_LOOKUP_H

#include <cstdint>
#include <cstring>

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
        const Vector low = __builtin_shuffle(quarters[0], quarters[1], index);
        const Vector high = __builtin_shuffle(quarters[2], quarters[3], index);
        const Vector result = index < 128 ? low : high;
        std::memcpy(bytes + i, &result, sizeof result);
    }
#endif
    for (; i < count; ++i) bytes[i] = table[bytes[i]];
}

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
