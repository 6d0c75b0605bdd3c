// SPDX-License-Identifier: MIT
#include "host/utilkit/utilkit.h"

#include <cstdint>

namespace {

constexpr std::int32_t largest = 0x7FFFFFFF;

constexpr std::int32_t saturated(std::int64_t value) {
    if (value > largest) return largest;
    return value < -std::int64_t{largest} - 1 ? -largest : static_cast<std::int32_t>(value);
}

}  // namespace

std::int32_t FixedMul(std::int32_t a, std::int32_t b) { return saturated(std::int64_t{a} * b / 65536); }

std::int32_t FixedDiv(std::int32_t a, std::int32_t b) {
    if (b != 0) return saturated(std::int64_t{a} * 65536 / b);
    if (a == 0) return 0;
    return a > 0 ? largest : -largest;
}
