// SPDX-License-Identifier: MIT
// vireo list and vireo info.
#include "app/commands/commands.h"
#include "app/settings/filter_settings.h"
#include "app/settings/parameter_value.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

const char* kindName(VRM::ParameterKind kind) {
    switch (kind) {
        case VRM::ParameterKind::Boolean: return "boolean";
        case VRM::ParameterKind::Color: return "colour";
        case VRM::ParameterKind::Number: break;
    }
    return "number";
}

/// A bound as people write it: whole where it is.
Json number(double value) {
    const double whole = std::nearbyint(value);
    return whole == value && std::abs(value) < 1e15 ? Json(static_cast<std::int64_t>(whole)) : Json(value);
}

Json summary(const VRM::Filter& filter) {
    const VRM::PropertyList& properties = filter.properties;
    return {{"id", filter.id},
            {"name", localised(properties.nameKey)},
            {"category", localised(properties.categoryKey)},
            {"matchName", properties.matchName},
            {"parameters", properties.parameters.size()}};
}

Json parameterJson(const VRM::Parameter& parameter, std::int64_t initial) {
    const std::string text = valueText(parameter, initial);
    return {{"name", localised(parameter.key)},
            {"kind", kindName(parameter.kind)},
            {"minimum", number(parameter.minimum)},
            {"maximum", number(parameter.maximum)},
            {"displayMinimum", number(parameter.displayMinimum)},
            {"displayMaximum", number(parameter.displayMaximum)},
            {"default", parameter.kind == VRM::ParameterKind::Color ? Json(text) : Json::parse(text)},
            {"size", parameter.size}};
}

/// Characters on a line, counted as code points of UTF-8.
std::size_t textWidth(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

using Row = std::vector<std::string>;

/// Columns as wide as their widest cell, two blanks between them.
void printTable(const std::vector<Row>& rows, const std::string& indentation) {
    std::vector<std::size_t> widths;
    for (const Row& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], textWidth(row[i]));
    }
    for (const Row& row : rows) {
        std::string line = indentation;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += row[i];
            if (i + 1 < row.size()) line += std::string(widths[i] - textWidth(row[i]) + 2, ' ');
        }
        std::cout << line << '\n';
    }
}

std::string rangeText(double minimum, double maximum) {
    return number(minimum).dump() + " to " + number(maximum).dump();
}

Row parameterRow(const VRM::Parameter& parameter, std::int64_t initial) {
    const bool isNumber = parameter.kind == VRM::ParameterKind::Number;
    const std::string text = valueText(parameter, initial);
    return {localised(parameter.key), kindName(parameter.kind),
            isNumber ? rangeText(parameter.minimum, parameter.maximum) : "",
            isNumber ? rangeText(parameter.displayMinimum, parameter.displayMaximum) : "",
            parameter.kind != VRM::ParameterKind::Boolean ? text
            : text == "true"                              ? "on"
                                                          : "off"};
}

}  // namespace

void listFilters(const Catalogue& catalogue, const ListOptions& options) {
    if (options.json) {
        Json list = Json::array();
        for (const VRM::Filter& filter : catalogue.filters()) list.push_back(summary(filter));
        std::cout << list.dump(2) << '\n';
        return;
    }
    std::vector<Row> rows{{"Id", "Name", "Category", "Parameters", "Match name"}};
    for (const VRM::Filter& filter : catalogue.filters()) {
        const VRM::PropertyList& properties = filter.properties;
        rows.push_back({std::to_string(filter.id), localised(properties.nameKey),
                        localised(properties.categoryKey), std::to_string(properties.parameters.size()),
                        properties.matchName});
    }
    printTable(rows, "");
}

void describeFilter(const Catalogue& catalogue, const InfoOptions& options) {
    const VRM::Filter& filter = catalogue.find(options.filter);
    const VRM::PropertyList& properties = filter.properties;
    const std::vector<std::uint8_t> initial = FilterSettings(filter).record({});

    if (options.json) {
        Json description = summary(filter);
        Json& parameters = description["parameters"] = Json::array();
        for (const VRM::Parameter& parameter : properties.parameters) {
            parameters.push_back(parameterJson(parameter, readValue(parameter, initial)));
        }
        std::cout << description.dump(2) << '\n';
        return;
    }
    std::cout << localised(properties.nameKey) << '\n';
    printTable({{"Id", std::to_string(filter.id)},
                {"Category", localised(properties.categoryKey)},
                {"Match name", properties.matchName}},
               "  ");
    if (properties.parameters.empty()) {
        std::cout << "\n  No parameters\n";
        return;
    }
    std::cout << '\n';
    std::vector<Row> rows{{"Parameter", "Kind", "Range", "Display", "Default"}};
    for (const VRM::Parameter& parameter : properties.parameters) {
        rows.push_back(parameterRow(parameter, readValue(parameter, initial)));
    }
    printTable(rows, "  ");
}

}  // namespace vireo
