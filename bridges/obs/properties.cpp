// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/obs/properties.h"

#include "bridges/obs/filter.h"
#include "bridges/obs/settings.h"
#include "bridges/obs/text.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vireo::obs {
namespace {

constexpr const char* chosenFilter = "add";
constexpr const char* cost = "cost";

std::vector<ListedFilter> listOf(const Filter& filter) {
    obs_data_t* const settings = obs_source_get_settings(filter.source());
    std::vector<ListedFilter> list;
    try {
        list = readList(settings);
    } catch (const std::runtime_error&) {
        // The line about the cost says so.
    }
    obs_data_release(settings);
    return list;
}

/// The position that a button's name ends with: "up 2".
std::size_t positionOf(obs_property_t* button) {
    const std::string name = obs_property_name(button);
    return std::strtoul(name.c_str() + name.find(' '), nullptr, 10);
}

/// Exchanges the filters at `first` and behind it.
void exchange(void* data, std::size_t first) {
    auto& filter = *static_cast<Filter*>(data);
    std::vector<ListedFilter> list = listOf(filter);
    if (first + 1 >= list.size()) return;
    std::swap(list[first], list[first + 1]);
    filter.changeList(list);
}

// OBS makes the properties anew when a list changes, so the buttons have nothing to refresh.

bool add(obs_properties_t*, obs_property_t*, void* data) {
    auto& filter = *static_cast<Filter*>(data);
    obs_data_t* const settings = obs_source_get_settings(filter.source());
    std::uint32_t chosen = 0;
    const bool isFilter =
        vireoFindFilter(engine(), obs_data_get_string(settings, chosenFilter), &chosen) == VireoDone;
    obs_data_release(settings);
    if (!isFilter) return false;
    std::vector<ListedFilter> list = listOf(filter);
    list.push_back(freshFilter(chosen));
    filter.changeList(list);
    return false;
}

bool moveUp(obs_properties_t*, obs_property_t* button, void* data) {
    const std::size_t position = positionOf(button);
    if (position > 0) exchange(data, position - 1);
    return false;
}

bool moveDown(obs_properties_t*, obs_property_t* button, void* data) {
    exchange(data, positionOf(button));
    return false;
}

bool remove(obs_properties_t*, obs_property_t* button, void* data) {
    auto& filter = *static_cast<Filter*>(data);
    std::vector<ListedFilter> list = listOf(filter);
    const std::size_t position = positionOf(button);
    if (position >= list.size()) return false;
    list.erase(list.begin() + static_cast<std::ptrdiff_t>(position));
    filter.changeList(list);
    return false;
}

void addControl(obs_properties_t* group, const std::string& name, std::uint32_t filter, std::uint32_t index) {
    const VireoParameter parameter = describeParameter(filter, index);
    if (parameter.kind == VireoBoolean) {
        obs_properties_add_bool(group, name.c_str(), parameter.label);
        return;
    }
    if (parameter.kind == VireoColor) {
        obs_properties_add_color(group, name.c_str(), parameter.label);
        return;
    }
    if (parameter.choiceCount > 0) {
        obs_property_t* const list = obs_properties_add_list(group, name.c_str(), parameter.label,
                                                             OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_INT);
        for (std::uint32_t i = 0; i < parameter.choiceCount; ++i) {
            obs_property_list_add_int(list, describeChoice(filter, index, i).c_str(),
                                      static_cast<long long>(parameter.minimum) + i);
        }
        return;
    }
    const std::string suffix = parameter.unit[0] == '\0' ? "" : std::string(" ") + parameter.unit;
    if (isScaled(parameter)) {
        obs_property_t* const slider =
            obs_properties_add_float_slider(group, name.c_str(), parameter.label, parameter.displayMinimum,
                                            parameter.displayMaximum, displayStep(parameter));
        obs_property_float_set_suffix(slider, suffix.c_str());
    } else {
        obs_property_t* const slider = obs_properties_add_int_slider(group, name.c_str(), parameter.label,
                                                                     static_cast<int>(parameter.minimum),
                                                                     static_cast<int>(parameter.maximum), 1);
        obs_property_int_set_suffix(slider, suffix.c_str());
    }
}

void addGroup(obs_properties_t* properties, std::size_t position, std::size_t count, std::uint32_t filter) {
    const VireoFilter description = describeFilter(filter);
    obs_properties_t* const group = obs_properties_create();
    for (std::uint32_t i = 0; i < description.parameterCount; ++i) {
        addControl(group, valueKey(position, description, describeParameter(filter, i)), filter, i);
    }
    const auto addButton = [&](const char* name, const char* text, obs_property_clicked_t clicked) {
        obs_properties_add_button(group, (name + std::to_string(position)).c_str(), obs_module_text(text),
                                  clicked);
    };
    if (position > 0) addButton("up ", "Up", moveUp);
    if (position + 1 < count) addButton("down ", "Down", moveDown);
    addButton("remove ", "Remove", remove);
    const std::string title = std::to_string(position + 1) + ". " + description.name;
    obs_properties_add_group(properties, ("filter " + std::to_string(position)).c_str(), title.c_str(),
                             OBS_GROUP_NORMAL, group);
}

/// Those of a menu, by category as menus have them.
void addFilterChoice(obs_properties_t* properties) {
    std::map<std::pair<std::string, std::string>, const char*> byCategory;
    for (std::uint32_t i = 0; i < vireoFilterCount(engine()); ++i) {
        const VireoFilter description = describeFilter(i);
        byCategory[{description.category, description.name}] = description.key;
    }
    obs_property_t* const choice = obs_properties_add_list(
        properties, chosenFilter, obs_module_text("Filter"), OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_STRING);
    for (const auto& [names, filterKey] : byCategory) {
        obs_property_list_add_string(choice, (names.first + " – " + names.second).c_str(), filterKey);
    }
    obs_properties_add_button(properties, "add filter", obs_module_text("Add"), add);
}

/// Only what belongs to the mode is shown.
bool modeChanged(obs_properties_t* properties, obs_property_t*, obs_data_t* settings) {
    const std::string mode = obs_data_get_string(settings, key::mode);
    obs_property_t* property = obs_properties_first(properties);
    while (property != nullptr) {
        const std::string name = obs_property_name(property);
        if (name == key::preset || name == key::file || name == key::text) {
            obs_property_set_visible(property, name == mode);
        } else if (name == chosenFilter || name == "add filter" ||
                   obs_property_get_type(property) == OBS_PROPERTY_GROUP) {
            obs_property_set_visible(property, mode == key::filters);
        }
        obs_property_next(&property);
    }
    return true;
}

void addMode(obs_properties_t* properties) {
    obs_property_t* const mode = obs_properties_add_list(properties, key::mode, obs_module_text("Mode"),
                                                         OBS_COMBO_TYPE_LIST, OBS_COMBO_FORMAT_STRING);
    obs_property_list_add_string(mode, obs_module_text("Mode.Filters"), key::filters);
    obs_property_list_add_string(mode, obs_module_text("Mode.Preset"), key::preset);
    obs_property_list_add_string(mode, obs_module_text("Mode.File"), key::file);
    obs_property_list_add_string(mode, obs_module_text("Mode.Text"), key::text);
    obs_property_set_modified_callback(mode, modeChanged);
}

void addPresets(obs_properties_t* properties) {
    obs_property_t* const list =
        obs_properties_add_list(properties, key::preset, obs_module_text("Mode.Preset"), OBS_COMBO_TYPE_LIST,
                                OBS_COMBO_FORMAT_STRING);
    obs_property_list_add_string(list, "", "");
    for (const Preset& preset : presets()) {
        const std::string text =
            preset.description.empty() ? preset.name : preset.name + " – " + preset.description;
        obs_property_list_add_string(list, text.c_str(), preset.name.c_str());
    }
}

std::string costText(const Statistics& statistics) {
    std::string milliseconds = std::to_string(statistics.milliseconds);
    milliseconds.resize(milliseconds.size() - 5);  // Six decimals are five too many.
    std::string text = filledIn(obs_module_text("Cost"), "{milliseconds}", milliseconds);
    text = filledIn(text, "{skipped}", std::to_string(statistics.skipped));
    return statistics.problem.empty() ? text : text + "\n" + statistics.problem;
}

bool refreshCost(obs_properties_t* properties, obs_property_t*, void* data) {
    const Statistics statistics = static_cast<Filter*>(data)->statistics();
    obs_property_t* const line = obs_properties_get(properties, cost);
    obs_property_set_description(line, costText(statistics).c_str());
    obs_property_text_set_info_type(
        line, statistics.problem.empty() ? OBS_TEXT_INFO_NORMAL : OBS_TEXT_INFO_WARNING);
    return true;
}

}  // namespace

obs_properties_t* makeProperties(Filter& filter) {
    obs_properties_t* const properties = obs_properties_create();
    addMode(properties);
    addFilterChoice(properties);
    const std::vector<ListedFilter> list = listOf(filter);
    for (std::size_t i = 0; i < list.size(); ++i) addGroup(properties, i, list.size(), list[i].filter);
    addPresets(properties);
    obs_properties_add_path(properties, key::file, obs_module_text("Mode.File"), OBS_PATH_FILE, nullptr,
                            nullptr);
    obs_properties_add_text(properties, key::text, obs_module_text("Mode.Text"), OBS_TEXT_MULTILINE);
    obs_properties_add_text(properties, cost, "", OBS_TEXT_INFO);
    obs_properties_add_button(properties, "refresh", obs_module_text("Refresh"), refreshCost);
    refreshCost(properties, nullptr, &filter);
    return properties;
}

}  // namespace vireo::obs
