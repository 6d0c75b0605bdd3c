// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_FILTER_JSON_H
#define VIREO_APP_COMMANDS_FILTER_JSON_H

#include "engine/catalogue/catalogue.h"

#include <nlohmann/json.hpp>

namespace vireo {

/// What vireo list and vireo info both say of a filter.
nlohmann::ordered_json filterJson(const hosting::Filter& filter);

/// The largest frames that a filter takes: "32767 pixels wide"; empty where there is no limit.
std::string limitsText(const hosting::FrameLimits& limits);
nlohmann::ordered_json limitsJson(const hosting::FrameLimits& limits);

}  // namespace vireo

#endif
