// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_FXKIT_CHANNEL_KERNELS_H
#define VIREO_HOST_FXKIT_CHANNEL_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstddef>
#include <cstdint>

/// A 3 x 3 kernel. The quotient of the weighted sum and `scale` is cut to a whole number before `offset` is
/// added.
struct Convolution {
    std::int16_t weights[3][3];
    int offset;
    int scale;  ///< Not 0.
};

struct ChannelKernels {
    /// Rows of `width` pixels of 4 bytes: the first three bytes through their tables of 256, the fourth
    /// copied. The destination may be the source.
    void (*applyTables)(const std::uint8_t* source, std::uint8_t* destination, std::ptrdiff_t rowBytes,
                        std::int64_t width, std::int64_t height, const std::uint8_t* const tables[3]);

    /// Writes `count` bytes. Each row holds a pixel more at either end; rows[0] meets weights[0]. The
    /// destination is none of the rows. For kernels with fitsSmall() only.
    void (*convolveSmall)(const std::uint8_t* const rows[3], std::uint8_t* destination, std::int64_t count,
                          const Convolution& convolution);

    /// The same for any kernel.
    void (*convolveAny)(const std::uint8_t* const rows[3], std::uint8_t* destination, std::int64_t count,
                        const Convolution& convolution);
};

/// Whether 8 bits hold the weights, and 16 the weighted sum of every pair of bytes and a quotient and the
/// offset.
constexpr bool fitsSmall(const Convolution& convolution) {
    int pair[5] = {};
    for (int i = 0; i < 9; ++i) {
        const int weight = convolution.weights[i / 3][i % 3];
        if (weight == 128) return false;
        pair[i / 2] += weight < 0 ? -weight : weight;
    }
    for (int sum : pair) {
        if (sum > 128) return false;
    }
    return convolution.offset >= -32000;
}

VIREO_KERNEL_TABLES(ChannelKernels, channelKernels)

#endif
