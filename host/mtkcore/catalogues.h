// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_MTKCORE_CATALOGUES_H
#define VIREO_HOST_MTKCORE_CATALOGUES_H

#include <cstdint>
#include <span>
#include <string_view>

namespace mtkcore::config {

struct CatalogueEntry {
    std::string_view key;  ///< Without "=" and what follows.
    std::u16string_view text;
};

/// One language's texts, sorted by key. Made from the .po files by the build.
struct Catalogue {
    std::uint16_t language;  ///< The primary language, without the sub-language.
    std::span<const CatalogueEntry> entries;
};

extern const std::span<const Catalogue> catalogues;

}  // namespace mtkcore::config

#endif
