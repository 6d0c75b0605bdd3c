// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_FILTER_JSON_H
#define VIREO_APP_COMMANDS_FILTER_JSON_H

#include "engine/catalogue/catalogue.h"

#include <nlohmann/json.hpp>

namespace vireo {

/// What vireo list and vireo info both say of a filter.
nlohmann::ordered_json filterJson(const hosting::Filter& filter);

}  // namespace vireo

#endif
