// SPDX-License-Identifier: MIT
// Vectors of pixels from scattered places. Where the processor gathers by itself it was measured to be no
// faster than such loads.
#ifndef VIREO_SIMD_GATHER_H
#define VIREO_SIMD_GATHER_H

#include "simd/ints.h"

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

/// The pixel at each address.
template <int bytes = vectorBytes>
Vector<std::uint32_t, bytes> gather(const std::uint8_t* const* addresses) {
    if constexpr (bytes == 16) {
        using Four = Vector<std::uint32_t, 16>;
#if defined(__SSE2__)
        const auto pair = [addresses](int i) {
            return _mm_unpacklo_epi32(_mm_loadu_si32(addresses[i]), _mm_loadu_si32(addresses[i + 1]));
        };
        return (Four)_mm_unpacklo_epi64(pair(0), pair(2));
#else
        const auto one = [addresses](int i) {
            std::uint32_t pixel;
            std::memcpy(&pixel, addresses[i], sizeof pixel);
            return pixel;
        };
        return Four{one(0), one(1), one(2), one(3)};
#endif
    } else {
        return join(gather<bytes / 2>(addresses), gather<bytes / 2>(addresses + bytes / 8));
    }
}

/// Pixels and their right neighbours.
struct PixelPairs {
    Pixels left;
    Pixels right;
};

template <int... i>
Pixels pairsAt(const std::uint8_t* base, const std::int32_t* offsets, std::integer_sequence<int, i...>) {
    const auto pair = [&](int lane) {
        std::uint64_t pixels;
        std::memcpy(&pixels, base + offsets[lane], sizeof pixels);
        return pixels;
    };
    return (Pixels)Vector<std::uint64_t>{pair(i)...};
}

template <int... i>
PixelPairs separated(Pixels first, Pixels second, std::integer_sequence<int, i...>) {
    return {__builtin_shufflevector(first, second, 2 * i...),
            __builtin_shufflevector(first, second, 2 * i + 1 ...)};
}

/// The pixel at each byte offset from `base`, and the one beside it.
inline PixelPairs gatherPairs(const std::uint8_t* base, Ints offsets) {
    constexpr int half = laneCount<Ints> / 2;
    using Half = std::make_integer_sequence<int, half>;
    std::int32_t each[2 * half];
    store(each, offsets);
    return separated(pairsAt(base, each, Half()), pairsAt(base, each + half, Half()), lanesOf<Pixels>);
}

#if defined(__AVX2__)

/// Neighbours in memory, of which any can come to any lane.
class PixelWindow {
public:
    static constexpr int width = 2 * laneCount<Pixels>;

    explicit PixelWindow(const std::uint8_t* address)
        : first_(load<Pixels>(address)), second_(load<Pixels>(address + vectorBytes)) {}

    Pixels operator[](Ints indices) const {
#if defined(__AVX512BW__)
        return (Pixels)_mm512_permutex2var_epi32((__m512i)first_, (__m512i)indices, (__m512i)second_);
#else
        return (Pixels)_mm256_blendv_ps((__m256)permute(first_, indices), (__m256)permute(second_, indices),
                                        (__m256)(indices << 28));
#endif
    }

private:
    Pixels first_;
    Pixels second_;
};

#endif

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
