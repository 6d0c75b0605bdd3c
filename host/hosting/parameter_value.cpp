// SPDX-License-Identifier: MIT
#include "host/hosting/parameter_value.h"

#include <algorithm>
#include <cmath>

namespace hosting {
namespace {

bool isSigned(const Parameter& parameter) { return parameter.minimum < 0; }

/// The smallest and the largest number in the parameter's bytes.
ValueRange recordRange(const Parameter& parameter) {
    const int bits = 8 * parameter.size;
    if (isSigned(parameter)) return {-(std::int64_t{1} << (bits - 1)), (std::int64_t{1} << (bits - 1)) - 1};
    return {0, (std::int64_t{1} << bits) - 1};
}

}  // namespace

ValueRange valueRange(const Parameter& parameter) {
    if (parameter.kind == ParameterKind::Boolean) return {0, 1};
    if (parameter.kind == ParameterKind::Color) return {0, 0xFFFFFF};
    const ValueRange record = recordRange(parameter);
    const double lowest = static_cast<double>(record.minimum), highest = static_cast<double>(record.maximum);
    return {static_cast<std::int64_t>(std::ceil(std::clamp(parameter.minimum, lowest, highest))),
            static_cast<std::int64_t>(std::floor(std::clamp(parameter.maximum, lowest, highest)))};
}

std::int64_t readValue(const Parameter& parameter, std::span<const std::uint8_t> record) {
    std::uint64_t bits = 0;
    for (int i = parameter.size - 1; i >= 0; --i) {
        bits = bits << 8 | record[parameter.offset + static_cast<std::size_t>(i)];
    }
    if (!isSigned(parameter)) return static_cast<std::int64_t>(bits);
    const int unused = 64 - 8 * parameter.size;
    return static_cast<std::int64_t>(bits << unused) >> unused;
}

void writeValue(const Parameter& parameter, std::int64_t value, std::span<std::uint8_t> record) {
    for (int i = 0; i < parameter.size; ++i) {
        record[parameter.offset + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> (8 * i));
    }
}

}  // namespace hosting
