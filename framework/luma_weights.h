// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_LUMA_WEIGHTS_H
#define VIREO_FRAMEWORK_LUMA_WEIGHTS_H

#include <array>
#include <cstdint>

/// Three rows of 256: floor(0.299 c), floor(0.587 c), floor(0.114 c). Luminance is the sum of three look-ups,
/// 254 at most.
using LumaWeightTable = std::array<std::uint8_t, 768>;

inline constexpr LumaWeightTable lumaWeights = [] {
    constexpr int perMille[] = {299, 587, 114};
    LumaWeightTable table{};
    for (int row = 0; row < 3; ++row) {
        for (int c = 0; c < 256; ++c) {
            table[static_cast<std::size_t>(256 * row + c)] =
                static_cast<std::uint8_t>(c * perMille[row] / 1000);
        }
    }
    return table;
}();

constexpr int lumaOf(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    return lumaWeights[red] + lumaWeights[256U + green] + lumaWeights[512U + blue];
}

// The same weights without a look-up, for vector kernels: floor(c * weight / 2^shift) gives the table's
// entries.
inline constexpr int lumaShift = 16;
inline constexpr std::uint32_t lumaWeight0 = 19595;
inline constexpr std::uint32_t lumaWeight1 = 38470;
inline constexpr std::uint32_t lumaWeight2 = 7472;

static_assert([] {
    constexpr std::uint32_t weights[] = {lumaWeight0, lumaWeight1, lumaWeight2};
    for (std::uint32_t i = 0; i < 768; ++i) {
        if (lumaWeights[i] != (i % 256 * weights[i / 256]) >> lumaShift) return false;
    }
    return true;
}());

#endif
