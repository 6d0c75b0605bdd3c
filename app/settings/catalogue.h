// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_SETTINGS_CATALOGUE_H
#define VIREO_APP_SETTINGS_CATALOGUE_H

#include "app/settings/names.h"
#include "host/vrm/meta_plugin.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// The filters of a module, found by name.
class Catalogue {
public:
    /// The filters outlive the catalogue.
    explicit Catalogue(std::span<const VRM::Filter> filters);

    std::span<const VRM::Filter> filters() const { return filters_; }

    /// The filter that goes by a display name, key segment, match name or id, or by any unambiguous beginning
    /// of one. Throws RenderError of wrong usage, with the names that come near.
    const VRM::Filter& find(std::string_view name) const;

private:
    std::span<const VRM::Filter> filters_;
    std::vector<Names> names_;
    std::vector<Names> translations_;  ///< Display names in the host's language.
};

/// The text of a key in the host's language.
std::string localised(const std::string& key);

/// The filter's word in its own keys: "BlackAndWhite" of "$$$/Strata/VireoFilters/BlackAndWhite/Name=…".
std::string keySegment(const VRM::PropertyList& properties);

}  // namespace vireo

#endif
