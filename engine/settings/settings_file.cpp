// SPDX-License-Identifier: MIT
#include "engine/settings/settings_file.h"

#include "engine/error.h"
#include "engine/files.h"
#include "engine/settings/parameter_value.h"
#include "engine/text.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace vireo {
namespace {

using Json = nlohmann::ordered_json;

constexpr int fileVersion = 1;
constexpr std::string_view levelsMagic{"L\0V\0", 4};
constexpr std::size_t levelsBytes = 40;

/// Raises errors that name the file and a place in it, such as "filters[0].parameters".
class Place {
public:
    Place(const std::string& file, std::string path) : file_(file), path_(std::move(path)) {}

    Place member(const std::string& name) const { return {file_, path_.empty() ? name : path_ + '.' + name}; }
    Place element(std::size_t index) const { return {file_, path_ + '[' + std::to_string(index) + ']'}; }

    [[noreturn]] void fail(const std::string& what) const { throw error(what); }

    /// Raises an error about what `inner` is about.
    [[noreturn]] void fail(const Error& inner) const {
        throw error(inner.what()).about(inner.filter(), inner.parameter(), inner.value());
    }

private:
    Error error(const std::string& what) const {
        return Error(Fault::BadSettings,
                     "the settings file " + file_ + (path_.empty() ? "" : " at " + path_) + ": " + what);
    }

    const std::string& file_;
    std::string path_;
};

/// A member that must be there.
const Json& require(const Json& object, const char* name, const Place& place) {
    if (!object.contains(name)) place.fail(inQuotes(name) + " is missing");
    return object[name];
}

void refuseOthers(const Json& object, std::initializer_list<std::string_view> known, const Place& place) {
    for (const auto& [name, value] : object.items()) {
        if (std::find(known.begin(), known.end(), name) == known.end())
            place.member(name).fail("is not known here");
    }
}

/// A scalar as it would be typed.
std::string scalarText(const Json& value, const Place& place) {
    if (value.is_string()) return value.get<std::string>();
    if (value.is_number() || value.is_boolean()) return value.dump();
    place.fail("must be a number, a text, true or false");
}

void assign(FilterSettings& settings, const std::string& name, const Json& value, const Place& place) {
    const std::string text = scalarText(value, place);
    try {
        settings.assign(name, text);
    } catch (const Error& error) {
        place.fail(error);
    }
}

FilterSettings parseFilter(const Catalogue& catalogue, const Json& entry, const Place& place) {
    if (!entry.is_object()) place.fail("must be an object with \"filter\" and \"parameters\"");
    refuseOthers(entry, {"filter", "parameters", "from", "to", "mix"}, place);
    const Json& name = require(entry, "filter", place);
    if (!name.is_string()) place.member("filter").fail("must be a filter's name");

    const hosting::Filter* filter = nullptr;
    try {
        filter = &catalogue.find(name.get<std::string>());
    } catch (const Error& error) {
        place.member("filter").fail(error);
    }
    FilterSettings settings(*filter, catalogue.language());
    if (entry.contains("parameters")) {
        const Json& parameters = entry["parameters"];
        const Place inside = place.member("parameters");
        if (!parameters.is_object()) inside.fail("must be an object of names and values");
        for (const auto& [parameter, value] : parameters.items()) {
            const Place named = inside.member(parameter);
            if (settings.isWord(parameter)) named.fail("is no parameter and belongs beside \"parameters\"");
            assign(settings, parameter, value, named);
        }
    }
    for (const char* word : {"from", "to", "mix"}) {
        if (entry.contains(word)) assign(settings, word, entry[word], place.member(word));
    }
    return settings;
}

Json parseJson(const Place& whole, std::string_view text) {
    try {
        return Json::parse(text);
    } catch (const Json::parse_error& error) {
        const std::size_t end = std::min(error.byte == 0 ? 0 : error.byte - 1, text.size());
        const std::string_view before = text.substr(0, end);
        const std::size_t lineStart =
            before.rfind('\n') == std::string_view::npos ? 0 : before.rfind('\n') + 1;
        whole.fail("is no valid JSON at line " +
                   std::to_string(std::count(before.begin(), before.end(), '\n') + 1) + ", column " +
                   std::to_string(end - lineStart + 1));
    } catch (const Json::out_of_range&) {
        whole.fail("holds a number that is too large");
    }
}

/// A constant as JSON's own kind of value, key frames as their text.
Json valueOf(const hosting::Parameter& parameter, const ValueTrack& track) {
    const std::string text = valueText(parameter, track);
    const bool isPlain = parameter.kind != hosting::ParameterKind::Color && !track.isKeyed();
    return isPlain ? Json::parse(text) : Json(text);
}

}  // namespace

std::vector<FilterSettings> parseSettings(const Catalogue& catalogue, const std::string& file,
                                          std::string_view text) {
    const Place whole(file, "");
    const Json document = parseJson(whole, text);
    if (!document.is_object()) whole.fail("must be an object with \"vireo\" and \"filters\"");
    const Json& version = require(document, "vireo", whole);
    if (version != fileVersion) {
        const std::string given = version.is_structured() ? "no number" : "version " + version.dump();
        whole.member("vireo").fail("is " + given + ", but only version 1 is known");
    }
    refuseOthers(document, {"vireo", "description", "filters"}, whole);
    if (document.contains("description") && !document["description"].is_string())
        whole.member("description").fail("must be a text");
    const Json& filters = require(document, "filters", whole);
    const Place list = whole.member("filters");
    if (!filters.is_array() || filters.empty()) list.fail("must be a list of at least one filter");

    std::vector<FilterSettings> chain;
    for (std::size_t i = 0; i < filters.size(); ++i)
        chain.push_back(parseFilter(catalogue, filters[i], list.element(i)));
    return chain;
}

std::string settingsDescription(const std::string& file, std::string_view text) {
    const Json document = parseJson(Place(file, ""), text);
    const bool hasText = document.is_object() && document.contains("description");
    return hasText && document["description"].is_string() ? document["description"].get<std::string>() : "";
}

std::string settingsText(std::vector<FilterSettings> chain) {
    Json filters = Json::array();
    for (FilterSettings& settings : chain) {
        if (settings.hasBytes()) settings.assignFromBytes();
        const hosting::PropertyList& properties = settings.filter().properties;
        Json entry;
        entry["filter"] = properties.name;
        if (!settings.assignments().empty()) {
            Json& parameters = entry["parameters"];
            for (const auto& [index, track] : settings.assignments()) {
                const hosting::Parameter& parameter = properties.parameters[index];
                parameters[parameter.name] = valueOf(parameter, track);
            }
        }
        if (settings.from()) entry["from"] = settings.from()->text;
        if (settings.to()) entry["to"] = settings.to()->text;
        if (settings.mix()) entry["mix"] = mixText(*settings.mix());
        filters.push_back(std::move(entry));
    }
    return Json{{"vireo", fileVersion}, {"filters", std::move(filters)}}.dump(2) + '\n';
}

bool isLevelsFile(std::string_view content) { return content.starts_with(levelsMagic); }

std::string levelsFile(std::span<const std::uint8_t> settings) {
    std::string file(levelsMagic);
    file.append(settings.begin(), settings.end());
    return file;
}

std::vector<std::uint8_t> parseLevelsFile(const std::string& file, std::string_view content) {
    if (!isLevelsFile(content))
        throw Error(Fault::BadSettings, file + " is no Levels file: it does not begin with 4C 00 56 00");
    content.remove_prefix(levelsMagic.size());
    if (content.size() < levelsBytes) {
        throw Error(Fault::BadSettings, file + " ends after " + std::to_string(content.size()) +
                                            " of the 40 bytes of Levels settings");
    }
    return {content.begin(), content.begin() + levelsBytes};
}

std::vector<std::uint8_t> readSettingsBytes(const std::string& source) {
    constexpr std::string_view hexPrefix = "hex:";
    if (!source.starts_with(hexPrefix)) {
        const std::string content = readFile(source);
        return {content.begin(), content.end()};
    }
    std::string digits = lowerCase(std::string_view(source).substr(hexPrefix.size()));
    std::erase(digits, ' ');
    if (digits.size() % 2 != 0 || digits.find_first_not_of("0123456789abcdef") != std::string::npos) {
        throw Error(Fault::Usage, "hex: takes two hexadecimal digits for each byte, not " + inQuotes(digits));
    }
    std::vector<std::uint8_t> bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

}  // namespace vireo
