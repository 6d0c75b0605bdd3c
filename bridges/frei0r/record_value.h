// SPDX-License-Identifier: GPL-2.0-or-later
// Values of parameters inside a settings record.
#ifndef VIREO_BRIDGES_FREI0R_RECORD_VALUE_H
#define VIREO_BRIDGES_FREI0R_RECORD_VALUE_H

#include "host/vrm/property_list.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace frei0r {

/// A value is signed when its range reaches below 0.
inline std::int64_t readValue(std::span<const std::uint8_t> record, const VRM::Parameter& parameter) {
    std::uint64_t bits = 0;
    for (int i = parameter.size - 1; i >= 0; --i) {
        bits = bits << 8 | record[parameter.offset + static_cast<std::size_t>(i)];
    }
    const int unused = 64 - 8 * parameter.size;
    if (parameter.minimum < 0) return static_cast<std::int64_t>(bits << unused) >> unused;
    return static_cast<std::int64_t>(bits);
}

inline void writeValue(std::span<std::uint8_t> record, const VRM::Parameter& parameter, std::int64_t value) {
    for (int i = 0; i < parameter.size; ++i) {
        record[parameter.offset + static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value >> 8 * i);
    }
}

}  // namespace frei0r

#endif
