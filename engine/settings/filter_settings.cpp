// SPDX-License-Identifier: MIT
#include "engine/settings/filter_settings.h"

#include "engine/error.h"
#include "engine/settings/parameter_value.h"
#include "engine/text.h"
#include "host/hosting/filter_instance.h"
#include "host/hosting/mix.h"

#include <algorithm>

namespace vireo {
namespace {

ClipTime parseWordTime(const std::string& owner, std::string_view value) {
    const auto time = parseClipTime(value);
    if (!time) {
        throw Error(Fault::BadValue,
                    owner + " takes a time like 5s, 2.5, 1:02:03.5 or 120f, not " + inQuotes(value), value);
    }
    return *time;
}

/// The text cut at a separator where it stands in no brackets.
std::vector<std::string_view> split(std::string_view text, std::string_view separators) {
    std::vector<std::string_view> pieces;
    int depth = 0;
    std::size_t begin = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '(') ++depth;
        if (text[i] == ')') --depth;
        if (separators.find(text[i]) == std::string_view::npos || depth > 0) continue;
        pieces.push_back(trimmed(text.substr(begin, i - begin)));
        begin = i + 1;
    }
    pieces.push_back(trimmed(text.substr(begin)));
    return pieces;
}

/// A name without blanks and brackets.
std::string compactName(std::string_view name) {
    std::string compact(name);
    std::erase_if(compact, [](char c) { return std::string_view(" ()").find(c) != std::string_view::npos; });
    return compact;
}

}  // namespace

FilterSettings::FilterSettings(const hosting::Filter& filter, std::uint16_t language) : filter_(&filter) {
    const hosting::FilterInstance instance(filter.entry);
    const auto initial = instance.settings();
    bytes_.assign(initial.begin(), initial.end());
    if (bytes_.size() < filter.properties.recordSize()) {
        throw Error(filter.properties.name + " keeps " + std::to_string(bytes_.size()) +
                    " bytes of settings, fewer than its parameters take");
    }
    for (const hosting::Parameter& parameter : filter.properties.parameters) {
        parameterNames_.push_back({parameter.name});
        parameterTranslations_.push_back({localised(parameter.key, language)});
    }
}

const hosting::Parameter& FilterSettings::parameterAt(ValueIndex index) const {
    const auto& parameters = filter_->properties.parameters;
    if (index < 0 || static_cast<std::size_t>(index) >= parameters.size()) {
        throw Error(Fault::Usage, filter_->properties.name + " has no parameter " + std::to_string(index));
    }
    return parameters[static_cast<std::size_t>(index)];
}

std::string FilterSettings::ownerName(std::string_view parameter) const {
    return std::string(parameter) + " of " + filter_->properties.name;
}

std::string_view FilterSettings::nameOf(ValueIndex index) const {
    switch (index) {
        case fromWord: return "from";
        case toWord: return "to";
        case mixWord: return "mix";
        default: return parameterAt(index).name;
    }
}

bool FilterSettings::isWord(std::string_view name) const {
    const std::string word = comparableName(name);
    return (word == "from" || word == "to" || word == "mix") && matchName(name, parameterNames_).empty();
}

ValueIndex FilterSettings::find(std::string_view name) const {
    const std::string& filter = filter_->properties.name;
    if (isWord(name)) {
        const std::string word = comparableName(name);
        return word == "from" ? fromWord : word == "to" ? toWord : mixWord;
    }
    auto matches = matchName(name, parameterNames_);
    if (matches.empty()) matches = matchName(name, parameterTranslations_);
    if (matches.size() == 1) return static_cast<ValueIndex>(matches.front());

    std::string sentence;
    if (!matches.empty()) {
        sentence = "the parameter " + inQuotes(name) + " of " + filter + " may be " +
                   enumeration(firstNames(matches, parameterNames_), "or");
    } else if (parameterNames_.empty()) {
        sentence = filter + " has no parameters, only from, to and mix, and no " + inQuotes(name);
    } else {
        sentence = filter + " has no parameter " + inQuotes(name) + "; the nearest are " +
                   enumeration(nearestNames(name, parameterNames_));
    }
    throw Error(Fault::UnknownParameter, sentence, name).about(filter, std::string(name));
}

void FilterSettings::assign(std::string_view name, std::string_view value) {
    const ValueIndex index = find(name);
    if (isSet(index)) {
        throw Error(Fault::BadText, ownerName(nameOf(index)) + " is given twice", name)
            .about(filter_->properties.name, std::string(nameOf(index)), std::string(value));
    }
    set(index, value);
}

void FilterSettings::set(ValueIndex index, std::string_view value) {
    const std::string name(nameOf(index));
    try {
        switch (index) {
            case fromWord: from_ = parseWordTime(ownerName(name), value); break;
            case toWord: to_ = parseWordTime(ownerName(name), value); break;
            case mixWord: mix_ = parseMix(ownerName(name), value); break;
            default: set(index, parseValueTrack(parameterAt(index), ownerName(name), value));
        }
    } catch (Error& error) {
        error.within(value).about(filter_->properties.name, name, std::string(value));
        throw;
    }
}

void FilterSettings::set(ValueIndex index, ValueTrack value) {
    const std::string owner = ownerName(nameOf(index));
    if (index == fromWord || index == toWord) {
        throw Error(Fault::Usage, owner + " is a time and takes no number");
    }
    if (index == mixWord) {
        checkRange({0, hosting::fullMix}, owner, value);
        mix_ = std::move(value);
        return;
    }
    checkTrack(parameterAt(index), owner, value);
    const auto given = std::find_if(assignments_.begin(), assignments_.end(), [index](const Assignment& a) {
        return a.parameter == static_cast<std::size_t>(index);
    });
    if (given == assignments_.end()) {
        assignments_.push_back({static_cast<std::size_t>(index), std::move(value)});
    } else {
        given->value = std::move(value);
    }
}

void FilterSettings::unset(ValueIndex index) {
    switch (index) {
        case fromWord: from_.reset(); break;
        case toWord: to_.reset(); break;
        case mixWord: mix_.reset(); break;
        default:
            parameterAt(index);
            std::erase_if(assignments_, [index](const Assignment& a) {
                return a.parameter == static_cast<std::size_t>(index);
            });
    }
}

const FilterSettings::Assignment* FilterSettings::assignment(std::size_t parameter) const {
    const auto given = std::find_if(assignments_.begin(), assignments_.end(),
                                    [parameter](const Assignment& a) { return a.parameter == parameter; });
    return given == assignments_.end() ? nullptr : &*given;
}

bool FilterSettings::isSet(ValueIndex index) const {
    switch (index) {
        case fromWord: return from_.has_value();
        case toWord: return to_.has_value();
        case mixWord: return mix_.has_value();
        default: return parameterAt(index), assignment(static_cast<std::size_t>(index)) != nullptr;
    }
}

std::string FilterSettings::text(ValueIndex index) const {
    switch (index) {
        case fromWord: return from_ ? from_->text : "";
        case toWord: return to_ ? to_->text : "";
        case mixWord: return mixText(value(index));
        default: return valueText(parameterAt(index), value(index));
    }
}

ValueTrack FilterSettings::value(ValueIndex index) const {
    if (index == mixWord) return mix_.value_or(ValueTrack(hosting::fullMix));
    const hosting::Parameter& parameter = parameterAt(index);
    const Assignment* const given = assignment(static_cast<std::size_t>(index));
    return given != nullptr ? given->value : ValueTrack(readValue(parameter, bytes_));
}

void FilterSettings::assignAll(const FilterSettings& other) {
    for (const Assignment& given : other.assignments_) {
        set(static_cast<ValueIndex>(given.parameter), given.value);
    }
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
        throw Error(Fault::Usage, "the settings of " + filter_->properties.name + " take " + sizes +
                                      " bytes, not " + std::to_string(bytes.size()))
            .about(filter_->properties.name);
    }
    std::copy(bytes.begin(), bytes.end(), bytes_.begin());
    hasBytes_ = true;
}

void FilterSettings::assignFromBytes() {
    const auto& parameters = filter_->properties.parameters;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        if (assignment(i) != nullptr) continue;
        const std::int64_t value = readValue(parameters[i], bytes_);
        const hosting::ValueRange range = valueRange(parameters[i]);
        if (value < range.minimum || value > range.maximum) {
            throw Error(ownerName(parameters[i].name) + " goes from " + std::to_string(range.minimum) +
                        " to " + std::to_string(range.maximum) + ", so that the " + std::to_string(value) +
                        " of the settings' bytes can only be kept with --save-settings-bytes");
        }
        set(static_cast<ValueIndex>(i), ValueTrack(value));
    }
}

bool FilterSettings::isAnimated() const {
    return std::any_of(assignments_.begin(), assignments_.end(),
                       [](const Assignment& given) { return !given.value.isConstant(); });
}

std::vector<std::uint8_t> FilterSettings::record(const FramePosition& position) const {
    std::vector<std::uint8_t> record = bytes_;
    for (const Assignment& given : assignments_) {
        writeValue(filter_->properties.parameters[given.parameter], given.value.at(position), record);
    }
    return record;
}

bool FilterSettings::covers(const FramePosition& position) const {
    return (!from_ || from_->reachedBy(position)) && (!to_ || !to_->reachedBy(position));
}

int FilterSettings::mixAt(const FramePosition& position) const {
    return mix_ ? static_cast<int>(mix_->at(position)) : hosting::fullMix;
}

FilterSettings parseFilterText(const Catalogue& catalogue, std::string_view text) {
    const std::size_t colon = std::min(text.find(':'), text.size());
    FilterSettings settings(catalogue.find(text.substr(0, colon)), catalogue.language());
    const std::string_view parameters = trimmed(text.substr(std::min(colon + 1, text.size())));
    if (parameters.empty()) return settings;

    for (const std::string_view piece : split(parameters, ",")) {
        const std::size_t equals = piece.find('=');
        const std::string_view name = trimmed(piece.substr(0, equals));
        if (equals == std::string_view::npos || name.empty()) {
            throw Error(Fault::BadText,
                        inQuotes(piece) + " in the filter " + inQuotes(trimmed(text)) +
                            " is not of the form parameter=value",
                        piece)
                .about(settings.filter().properties.name, {}, std::string(piece));
        }
        settings.assign(name, trimmed(piece.substr(equals + 1)));
    }
    return settings;
}

std::vector<FilterSettings> parseChainText(const Catalogue& catalogue, std::string_view text) {
    std::vector<FilterSettings> chain;
    for (const std::string_view filter : split(text, ";\r\n")) {
        if (!filter.empty()) chain.push_back(parseFilterText(catalogue, filter));
    }
    return chain;
}

std::string filterText(const FilterSettings& settings, Spelling spelling) {
    const bool isCompact = spelling == Spelling::Compact;
    const hosting::PropertyList& properties = settings.filter().properties;
    std::string text = isCompact ? keySegment(properties) : properties.name;
    char separator = ':';
    const auto add = [&](std::string_view name, const std::string& value) {
        text += separator;
        text += isCompact ? compactName(name) : std::string(name);
        text += '=' + value;
        separator = ',';
    };
    for (const auto& [parameter, value] : settings.assignments()) {
        add(properties.parameters[parameter].name, valueText(properties.parameters[parameter], value));
    }
    if (settings.from()) add("from", settings.from()->text);
    if (settings.to()) add("to", settings.to()->text);
    if (settings.mix()) {
        std::string mix = mixText(*settings.mix());
        if (isCompact) std::erase(mix, '%');
        add("mix", mix);
    }
    return text;
}

}  // namespace vireo
