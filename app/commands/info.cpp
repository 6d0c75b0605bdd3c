// SPDX-License-Identifier: MIT
// vireo info: one filter with its parameters.
#include "app/base/terminal.h"
#include "app/commands/commands.h"
#include "app/commands/filter_json.h"
#include "app/commands/table.h"
#include "engine/settings/filter_settings.h"
#include "engine/settings/parameter_value.h"

#include <cmath>
#include <iostream>
#include <memory>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

const char* kindName(hosting::ParameterKind kind) {
    switch (kind) {
        case hosting::ParameterKind::Boolean: return "boolean";
        case hosting::ParameterKind::Color: return "colour";
        case hosting::ParameterKind::Number: break;
    }
    return "number";
}

/// A bound as people write it: whole where it is.
Json number(double value) {
    const double whole = std::nearbyint(value);
    return whole == value && std::abs(value) < 1e15 ? Json(static_cast<std::int64_t>(whole)) : Json(value);
}

Json parameterJson(const hosting::Parameter& parameter, std::int64_t initial) {
    const std::string text = valueText(parameter, initial);
    return {{"name", localised(parameter.key)},
            {"kind", kindName(parameter.kind)},
            {"minimum", number(parameter.minimum)},
            {"maximum", number(parameter.maximum)},
            {"displayMinimum", number(parameter.displayMinimum)},
            {"displayMaximum", number(parameter.displayMaximum)},
            {"default", parameter.kind == hosting::ParameterKind::Color ? Json(text) : Json::parse(text)},
            {"size", parameter.size}};
}

std::string rangeText(double minimum, double maximum) {
    return number(minimum).dump() + " to " + number(maximum).dump();
}

TableRow parameterRow(const hosting::Parameter& parameter, std::int64_t initial) {
    const bool isNumber = parameter.kind == hosting::ParameterKind::Number;
    const std::string text = valueText(parameter, initial);
    return {localised(parameter.key), kindName(parameter.kind),
            isNumber ? rangeText(parameter.minimum, parameter.maximum) : "",
            isNumber ? rangeText(parameter.displayMinimum, parameter.displayMaximum) : "",
            parameter.kind != hosting::ParameterKind::Boolean ? text
            : text == "true"                                  ? "on"
                                                              : "off"};
}

void describeFilter(const hosting::Filter& filter, bool asJson) {
    const hosting::PropertyList& properties = filter.properties;
    const std::vector<std::uint8_t> initial = FilterSettings(filter).record({});

    if (asJson) {
        Json description = filterJson(filter);
        Json& parameters = description["parameters"] = Json::array();
        for (const hosting::Parameter& parameter : properties.parameters) {
            parameters.push_back(parameterJson(parameter, readValue(parameter, initial)));
        }
        std::cout << description.dump(2) << '\n';
        return;
    }
    std::cout << Terminal::output().styled(Style::Heading, localised(properties.nameKey))
              << "\n  Id          " << filter.id << "\n  Category    " << localised(properties.categoryKey)
              << "\n  Match name  " << properties.matchName << '\n';
    const std::string limits = limitsText(traitsOf(filter).limits);
    if (!limits.empty()) std::cout << "  Largest     " << limits << '\n';
    if (properties.parameters.empty()) {
        std::cout << "\n  No parameters\n";
        return;
    }
    std::cout << '\n';
    std::vector<TableRow> rows{{"Parameter", "Kind", "Range", "Display", "Default"}};
    for (const hosting::Parameter& parameter : properties.parameters) {
        rows.push_back(parameterRow(parameter, readValue(parameter, initial)));
    }
    printTable(rows, "  ", 0);
}

}  // namespace

void addInfoCommand(CommandSet& commands) {
    struct Options {
        std::string filter;
        bool json = false;
    };
    const auto options = std::make_shared<Options>();
    CLI::App& command =
        commands.add("info", "Describe a filter and its parameters", [options](Session& session) {
            describeFilter(session.catalogue().find(options->filter), options->json);
            return 0;
        });
    command.add_option("filter", options->filter, "Its name or the beginning of it, key, match name or id")
        ->required()
        ->type_name("FILTER");
    command.add_flag("--json", options->json, "As JSON");
    command.footer("Examples:\n  vireo info \"Color Replace\"\n  vireo info solar --json");
}

}  // namespace vireo
