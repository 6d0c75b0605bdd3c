// SPDX-License-Identifier: MIT
// 16.16 fixed point as the host's FixedMul and FixedDiv compute it, for operands that may be wider than 32
// bits.
#ifndef VIREO_FILTERS_LENS_FIXED_POINT_H
#define VIREO_FILTERS_LENS_FIXED_POINT_H

#include <cmath>
#include <cstdint>

inline constexpr std::int64_t fixedOne = 65536;
inline constexpr std::int64_t fixedLargest = 0x7FFFFFFF;

constexpr std::int64_t saturatedBySign(bool negative) { return negative ? -fixedLargest : fixedLargest; }

constexpr std::int64_t saturatedFixed(std::int64_t value) {
    return value > fixedLargest || value < -fixedLargest - 1 ? saturatedBySign(value < 0) : value;
}

/// Truncated toward zero and limited to 32 bits.
constexpr std::int64_t fixedMul(std::int64_t a, std::int64_t b) {
    std::int64_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) return saturatedBySign((a < 0) != (b < 0));
    return saturatedFixed(product / fixedOne);
}

/// The same. By zero it gives the largest value of the dividend's sign, and 0 / 0 gives 0.
constexpr std::int64_t fixedDiv(std::int64_t a, std::int64_t b) {
    std::int64_t dividend = 0;
    if (b == 0) return a == 0 ? 0 : saturatedBySign(a < 0);
    if (__builtin_mul_overflow(a, fixedOne, &dividend)) return saturatedBySign((a < 0) != (b < 0));
    return saturatedFixed(dividend / b);
}

/// The root of a whole number in 16.16, truncated.
inline std::int64_t fixedRoot(std::int64_t square) {
    __extension__ using Wide = unsigned __int128;
    const Wide shifted = static_cast<Wide>(square) << 32;
    auto root = static_cast<std::int64_t>(std::sqrt(static_cast<double>(square)) * fixedOne);
    while (static_cast<Wide>(root) * static_cast<Wide>(root) > shifted) --root;
    while (static_cast<Wide>(root + 1) * static_cast<Wide>(root + 1) <= shifted) ++root;
    return root;
}

#endif
