// SPDX-License-Identifier: MIT
#include "app/commands/filter_json.h"

#include <string>

namespace vireo {

nlohmann::ordered_json filterJson(const hosting::Filter& filter) {
    const hosting::PropertyList& properties = filter.properties;
    return {{"id", filter.id},
            {"name", localised(properties.nameKey)},
            {"category", localised(properties.categoryKey)},
            {"matchName", properties.matchName},
            {"parameters", properties.parameters.size()}};
}

std::string limitsText(const hosting::FrameLimits& limits) {
    std::string text;
    const auto add = [&](std::int32_t limit, const std::string& what) {
        if (limit == hosting::FrameLimits::none) return;
        if (!text.empty()) text += ", ";
        text += std::to_string(limit) + what;
    };
    add(limits.width, " pixels wide");
    add(limits.height, " pixels high");
    add(limits.rowBytes, " bytes a row");
    return text;
}

nlohmann::ordered_json limitsJson(const hosting::FrameLimits& limits) {
    const auto limit = [](std::int32_t value) {
        return value == hosting::FrameLimits::none ? nlohmann::ordered_json() : nlohmann::ordered_json(value);
    };
    return {{"width", limit(limits.width)},
            {"height", limit(limits.height)},
            {"rowBytes", limit(limits.rowBytes)}};
}

}  // namespace vireo
