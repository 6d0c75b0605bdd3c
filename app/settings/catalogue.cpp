// SPDX-License-Identifier: MIT
#include "app/settings/catalogue.h"

#include "app/render/render_job.h"
#include "host/mtkcore/localizer.h"
#include "host/mtkcore/utility.h"

namespace vireo {

Catalogue::Catalogue(std::span<const VRM::Filter> filters) : filters_(filters) {
    for (const VRM::Filter& filter : filters_) {
        names_.push_back({filter.properties.name, keySegment(filter.properties), filter.properties.matchName,
                          std::to_string(filter.id)});
        translations_.push_back({localised(filter.properties.nameKey)});
    }
}

const VRM::Filter& Catalogue::find(std::string_view name) const {
    auto matches = matchName(name, names_);
    if (matches.empty()) matches = matchName(name, translations_);
    if (matches.size() == 1) return filters_[matches.front()];
    const std::string quoted = '"' + std::string(trimmed(name)) + '"';
    if (matches.empty()) {
        const auto nearest = nearestNames(name, names_);
        throw RenderError("there is no filter " + quoted + "; the nearest are " + enumeration(nearest), 2);
    }
    throw RenderError("the filter " + quoted + " may be " + enumeration(firstNames(matches, names_), "or"),
                      2);
}

std::string localised(const std::string& key) {
    return mtkcore::utility::UTF16ToUtf8(mtkcore::config::Localizer::Get().Translate(key));
}

std::string keySegment(const VRM::PropertyList& properties) {
    const std::string path = properties.nameKey.substr(0, properties.nameKey.find('='));
    const std::size_t end = path.rfind('/');
    if (end == std::string::npos || end == 0) return properties.name;
    return path.substr(path.rfind('/', end - 1) + 1, end - path.rfind('/', end - 1) - 1);
}

}  // namespace vireo
