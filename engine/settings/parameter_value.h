// SPDX-License-Identifier: MIT
// A parameter's value as people write it.
#ifndef VIREO_ENGINE_SETTINGS_PARAMETER_VALUE_H
#define VIREO_ENGINE_SETTINGS_PARAMETER_VALUE_H

#include "engine/settings/value_track.h"
#include "host/hosting/parameter_value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vireo {

/// Whether "40%" is a value: on a display range of 0 to 100 or 0 to 200.
bool takesPercent(const hosting::Parameter& parameter);

/// Between 0xRRGGBB and the stored order, red in the low byte.
std::int64_t swapRedAndBlue(std::int64_t color);

/// One value, or key frames: whole numbers, "N%", colours or a word for on and off, by the parameter's kind.
/// Colours have red in the low byte, check boxes are 0 or 1. Throws Error of wrong usage, which names the
/// parameter as `owner` does ("Threshold of Solarize") and the ends of its range.
ValueTrack parseValueTrack(const hosting::Parameter& parameter, const std::string& owner,
                           std::string_view text);

/// Refuse values outside a range, or that a parameter does not take. Throw Error as parseValueTrack() does.
void checkRange(const hosting::ValueRange& range, const std::string& owner, const ValueTrack& track);
void checkTrack(const hosting::Parameter& parameter, const std::string& owner, const ValueTrack& track);

/// The shortest text that parses to the value: "20", "#ff0000", "true".
std::string valueText(const hosting::Parameter& parameter, std::int64_t value);

/// The same of a track: "0@0s..254@5s".
std::string valueText(const hosting::Parameter& parameter, const ValueTrack& track);

/// What a filter's mix takes: whole per cents, with or without the sign.
ValueTrack parseMix(const std::string& owner, std::string_view text);
std::string mixText(const ValueTrack& mix);

}  // namespace vireo

#endif
