// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CATALOGUE_CATALOGUE_H
#define VIREO_ENGINE_CATALOGUE_CATALOGUE_H

#include "engine/catalogue/names.h"
#include "host/hosting/filter_traits.h"
#include "host/hosting/meta_plugin.h"
#include "host/qrb/language.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// The filters of a module, found by name.
class Catalogue {
public:
    /// The filters outlive the catalogue. They go by their English names and by those of the language, a word
    /// like QRB::GetLanguageID()'s.
    explicit Catalogue(std::span<const hosting::Filter> filters,
                       std::uint16_t language = QRB::GetLanguageID());

    std::span<const hosting::Filter> filters() const { return filters_; }
    std::uint16_t language() const { return language_; }

    /// The filter that goes by a display name, key segment, match name or id, or by any unambiguous beginning
    /// of one. Throws Error of wrong usage, with the names that come near.
    const hosting::Filter& find(std::string_view name) const;

private:
    std::span<const hosting::Filter> filters_;
    std::vector<Names> names_;
    std::vector<Names> translations_;  ///< Display names in the language.
    std::uint16_t language_;
};

/// The text of a key in a language.
std::string localised(const std::string& key, std::uint16_t language = QRB::GetLanguageID());

/// The filter's word in its own keys: "BlackAndWhite" of "$$$/Strata/VireoFilters/BlackAndWhite/Name=…".
std::string keySegment(const hosting::PropertyList& properties);

/// What the property list does not tell of the filter.
inline const hosting::FilterTraits& traitsOf(const hosting::Filter& filter) {
    return hosting::filterTraits(filter.properties.matchName);
}

}  // namespace vireo

#endif
