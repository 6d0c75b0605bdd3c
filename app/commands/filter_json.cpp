// SPDX-License-Identifier: MIT
#include "app/commands/filter_json.h"

namespace vireo {

nlohmann::ordered_json filterJson(const hosting::Filter& filter) {
    const hosting::PropertyList& properties = filter.properties;
    return {{"id", filter.id},
            {"name", localised(properties.nameKey)},
            {"category", localised(properties.categoryKey)},
            {"matchName", properties.matchName},
            {"parameters", properties.parameters.size()}};
}

}  // namespace vireo
