// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_ANTIALIAS_AVERAGE_H
#define VIREO_FILTERS_LENS_ANTIALIAS_AVERAGE_H

#include <cstdint>

/// The bits of a pixel that halving does not drop.
inline constexpr std::uint32_t halvedBits = 0xFFFEFEFE;

/// Halves the sum of two pixels channel by channel. The three low bytes lose their lowest bit before they
/// are added, alpha keeps it.
inline std::uint32_t halfway(std::uint32_t a, std::uint32_t b) {
    a &= halvedBits;
    b &= halvedBits;
    return (a & b) + ((a ^ b) >> 1 & 0x7F7F7F7F);
}

#endif
