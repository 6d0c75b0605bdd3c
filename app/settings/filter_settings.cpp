// SPDX-License-Identifier: MIT
#include "app/settings/filter_settings.h"

#include "app/render/render_job.h"
#include "app/settings/parameter_value.h"
#include "host/vrm/filter_instance.h"

#include <algorithm>

namespace vireo {
namespace {

constexpr int fullMix = 100;

std::string quoted(std::string_view text) { return '"' + std::string(text) + '"'; }

ClipTime parseWordTime(const std::string& owner, std::string_view value) {
    const auto time = parseClipTime(value);
    if (!time) {
        throw RenderError(owner + " takes a time like 5s, 2.5, 1:02:03.5 or 120f, not " + quoted(value), 2);
    }
    return *time;
}

[[noreturn]] void failTwice(const std::string& owner) { throw RenderError(owner + " is given twice", 2); }

/// The text cut at the commas that stand in no brackets.
std::vector<std::string_view> splitAtCommas(std::string_view text) {
    std::vector<std::string_view> pieces;
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '(') ++depth;
        if (text[i] == ')') --depth;
        if (text[i] != ',' || depth > 0) continue;
        pieces.push_back(trimmed(text.substr(begin, i - begin)));
        begin = i + 1;
    }
    pieces.push_back(trimmed(text.substr(begin)));
    return pieces;
}

}  // namespace

FilterSettings::FilterSettings(const VRM::Filter& filter) : filter_(&filter) {
    const VRM::FilterInstance instance(filter.entry);
    const auto initial = instance.settings();
    bytes_.assign(initial.begin(), initial.end());
    if (bytes_.size() < filter.properties.recordSize()) {
        throw RenderError(filter.properties.name + " keeps " + std::to_string(bytes_.size()) +
                          " bytes of settings, fewer than its parameters take");
    }
    for (const VRM::Parameter& parameter : filter.properties.parameters) {
        parameterNames_.push_back({parameter.name});
        parameterTranslations_.push_back({localised(parameter.key)});
    }
}

std::string FilterSettings::ownerName(std::string_view parameter) const {
    return std::string(parameter) + " of " + filter_->properties.name;
}

bool FilterSettings::isWord(std::string_view name) const {
    const std::string word = comparableName(name);
    return (word == "from" || word == "to" || word == "mix") && matchName(name, parameterNames_).empty();
}

void FilterSettings::assign(std::string_view name, std::string_view value) {
    const auto& parameters = filter_->properties.parameters;
    const std::string word = comparableName(name);
    auto matches = matchName(name, parameterNames_);
    if (matches.empty() && !isWord(name)) matches = matchName(name, parameterTranslations_);
    if (matches.size() > 1) {
        throw RenderError("the parameter " + quoted(name) + " of " + filter_->properties.name + " may be " +
                              enumeration(firstNames(matches, parameterNames_), "or"),
                          2);
    }
    if (matches.size() == 1) {
        const VRM::Parameter& parameter = parameters[matches.front()];
        if (isAssigned(matches.front())) failTwice(ownerName(parameter.name));
        assign(matches.front(), parseValueTrack(parameter, ownerName(parameter.name), value));
        return;
    }
    if ((word == "from" && from_) || (word == "to" && to_) || (word == "mix" && mix_))
        failTwice(ownerName(word));
    if (word == "from") {
        from_ = parseWordTime(ownerName(word), value);
    } else if (word == "to") {
        to_ = parseWordTime(ownerName(word), value);
    } else if (word == "mix") {
        mix_ = parseMix(ownerName(word), value);
    } else if (parameters.empty()) {
        throw RenderError(
            filter_->properties.name + " has no parameters, only from, to and mix, and no " + quoted(name),
            2);
    } else {
        throw RenderError(filter_->properties.name + " has no parameter " + quoted(name) +
                              "; the nearest are " + enumeration(nearestNames(name, parameterNames_)),
                          2);
    }
}

bool FilterSettings::isAssigned(std::size_t parameter) const {
    return std::any_of(assignments_.begin(), assignments_.end(), [parameter](const Assignment& assignment) {
        return assignment.parameter == parameter;
    });
}

void FilterSettings::assign(std::size_t parameter, ValueTrack value) {
    const auto given = std::find_if(assignments_.begin(), assignments_.end(),
                                    [parameter](const Assignment& a) { return a.parameter == parameter; });
    if (given == assignments_.end()) {
        assignments_.push_back({parameter, std::move(value)});
    } else {
        given->value = std::move(value);
    }
}

void FilterSettings::assignAll(const FilterSettings& other) {
    for (const Assignment& assignment : other.assignments_) assign(assignment.parameter, assignment.value);
    if (other.from_) from_ = other.from_;
    if (other.to_) to_ = other.to_;
    if (other.mix_) mix_ = other.mix_;
}

void FilterSettings::setBytes(std::span<const std::uint8_t> bytes) {
    const std::size_t parameterBytes = filter_->properties.recordSize();
    if (bytes.size() != bytes_.size() && bytes.size() != parameterBytes) {
        const std::string sizes = parameterBytes == bytes_.size() ? std::to_string(bytes_.size())
                                                                  : std::to_string(parameterBytes) + " or " +
                                                                        std::to_string(bytes_.size());
        throw RenderError("the settings of " + filter_->properties.name + " take " + sizes + " bytes, not " +
                              std::to_string(bytes.size()),
                          2);
    }
    std::copy(bytes.begin(), bytes.end(), bytes_.begin());
}

void FilterSettings::assignFromBytes() {
    const auto& parameters = filter_->properties.parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (isAssigned(i)) continue;
        const std::int64_t value = readValue(parameters[i], bytes_);
        const VRM::ValueRange range = valueRange(parameters[i]);
        if (value < range.minimum || value > range.maximum) {
            throw RenderError(ownerName(parameters[i].name) + " goes from " + std::to_string(range.minimum) +
                              " to " + std::to_string(range.maximum) + ", so that the " +
                              std::to_string(value) +
                              " of the settings' bytes can only be kept with --save-settings-bytes");
        }
        assign(i, ValueTrack(value));
    }
}

bool FilterSettings::isAnimated() const {
    return std::any_of(assignments_.begin(), assignments_.end(),
                       [](const Assignment& assignment) { return !assignment.value.isConstant(); });
}

std::vector<std::uint8_t> FilterSettings::record(const FramePosition& position) const {
    std::vector<std::uint8_t> record = bytes_;
    for (const Assignment& assignment : assignments_) {
        writeValue(filter_->properties.parameters[assignment.parameter], assignment.value.at(position),
                   record);
    }
    return record;
}

bool FilterSettings::covers(const FramePosition& position) const {
    return (!from_ || from_->reachedBy(position)) && (!to_ || !to_->reachedBy(position));
}

int FilterSettings::mixAt(const FramePosition& position) const {
    return mix_ ? static_cast<int>(mix_->at(position)) : fullMix;
}

FilterSettings parseFilterText(const Catalogue& catalogue, std::string_view text) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    FilterSettings settings(catalogue.find(text.substr(0, colon)));
    const std::string_view parameters = trimmed(text.substr(std::min(colon + 1, text.size())));
    if (parameters.empty()) return settings;

    for (const std::string_view piece : splitAtCommas(parameters)) {
        const std::size_t equals = piece.find('=');
        const std::string_view name = trimmed(piece.substr(0, equals));
        if (equals == std::string_view::npos || name.empty()) {
            throw RenderError(quoted(piece) + " in the filter " + quoted(trimmed(text)) +
                                  " is not of the form parameter=value",
                              2);
        }
        settings.assign(name, trimmed(piece.substr(equals + 1)));
    }
    return settings;
}

}  // namespace vireo
