// SPDX-License-Identifier: MIT
// A parameter's value as people write it.
#ifndef VIREO_APP_SETTINGS_PARAMETER_VALUE_H
#define VIREO_APP_SETTINGS_PARAMETER_VALUE_H

#include "app/settings/value_track.h"
#include "host/vrm/parameter_value.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vireo {

/// One value: a whole number, "N%", a colour or a word for on and off, by the parameter's kind. Colours have
/// red in the low byte, check boxes are 0 or 1. Throws RenderError of wrong usage, which names the parameter
/// as `owner` does ("Threshold of Solarize") and the ends of its range.
std::int64_t parseValue(const VRM::Parameter& parameter, const std::string& owner, std::string_view text);

/// The same, or key frames of such values.
ValueTrack parseValueTrack(const VRM::Parameter& parameter, const std::string& owner, std::string_view text);

/// The shortest text that parses to the value: "20", "#ff0000", "true".
std::string valueText(const VRM::Parameter& parameter, std::int64_t value);

/// The same of a track: "0@0s..254@5s".
std::string valueText(const VRM::Parameter& parameter, const ValueTrack& track);

/// What a filter's mix takes: whole per cents, with or without the sign.
ValueTrack parseMix(const std::string& owner, std::string_view text);
std::string mixText(const ValueTrack& mix);

}  // namespace vireo

#endif
