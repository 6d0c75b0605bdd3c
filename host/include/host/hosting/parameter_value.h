// SPDX-License-Identifier: MIT
// A parameter's value as the number that a settings record holds.
#ifndef VIREO_HOST_HOSTING_PARAMETER_VALUE_H
#define VIREO_HOST_HOSTING_PARAMETER_VALUE_H

#include "host/host_export.h"
#include "host/hosting/property_list.h"

#include <cstdint>
#include <span>

namespace hosting {

/// The whole numbers that a parameter takes, both ends included: its range, as far as the record can hold it.
struct ValueRange {
    std::int64_t minimum = 0;
    std::int64_t maximum = 0;
};
VIREO_HOST_API ValueRange valueRange(const Parameter& parameter);

/// The value that a settings record holds, signed when the parameter's range reaches below 0. The record
/// holds the parameter whole.
VIREO_HOST_API std::int64_t readValue(const Parameter& parameter, std::span<const std::uint8_t> record);
VIREO_HOST_API void writeValue(const Parameter& parameter, std::int64_t value,
                               std::span<std::uint8_t> record);

}  // namespace hosting

#endif
