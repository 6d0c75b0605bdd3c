// SPDX-License-Identifier: MIT
#include "engine/catalogue/catalogue.h"

#include "engine/error.h"
#include "engine/text.h"
#include "host/mtkcore/localizer.h"
#include "host/mtkcore/utility.h"

namespace vireo {

Catalogue::Catalogue(std::span<const hosting::Filter> filters, std::uint16_t language)
    : filters_(filters), language_(language) {
    for (const hosting::Filter& filter : filters_) {
        names_.push_back({filter.properties.name, keySegment(filter.properties), filter.properties.matchName,
                          std::to_string(filter.id)});
        translations_.push_back({localised(filter.properties.nameKey, language)});
    }
}

const hosting::Filter& Catalogue::find(std::string_view name) const {
    auto matches = matchName(name, names_);
    if (matches.empty()) matches = matchName(name, translations_);
    if (matches.size() == 1) return filters_[matches.front()];
    const std::string_view typed = trimmed(name);
    throw Error(Fault::UnknownFilter,
                matches.empty() ? "there is no filter " + inQuotes(typed) + "; the nearest are " +
                                      enumeration(nearestNames(name, names_))
                                : "the filter " + inQuotes(typed) + " may be " +
                                      enumeration(firstNames(matches, names_), "or"),
                typed)
        .about(std::string(typed));
}

std::string localised(const std::string& key, std::uint16_t language) {
    return mtkcore::utility::UTF16ToUtf8(mtkcore::config::Localizer::Get().Translate(key, language));
}

std::string keySegment(const hosting::PropertyList& properties) {
    const std::string path = properties.nameKey.substr(0, properties.nameKey.find('='));
    const std::size_t end = path.rfind('/');
    if (end == std::string::npos || end == 0) return properties.name;
    return path.substr(path.rfind('/', end - 1) + 1, end - path.rfind('/', end - 1) - 1);
}

}  // namespace vireo
