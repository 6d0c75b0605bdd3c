// SPDX-License-Identifier: MIT
#include "host/mtkcore/localizer.h"

#include "host/mtkcore/catalogues.h"
#include "host/mtkcore/utility.h"
#include "host/qrb/language.h"

#include <algorithm>

namespace mtkcore::config {
namespace {

constexpr std::string_view keyPrefix = "$$$/";

}  // namespace

const Localizer& Localizer::Get() {
    static const Localizer localizer;
    return localizer;
}

std::u16string Localizer::Translate(std::string_view key) const {
    return Translate(key, QRB::GetLanguageID());
}

std::u16string Localizer::Translate(std::string_view key, std::uint16_t language) const {
    if (!key.starts_with(keyPrefix)) return utility::Utf8ToUTF16(key);
    const std::size_t equals = key.find('=');
    const std::string_view name = key.substr(0, equals);
    for (const Catalogue& catalogue : catalogues) {
        if (catalogue.language != QRB::primaryLanguage(language)) continue;
        const auto entry = std::lower_bound(
            catalogue.entries.begin(), catalogue.entries.end(), name,
            [](const CatalogueEntry& known, std::string_view sought) { return known.key < sought; });
        if (entry != catalogue.entries.end() && entry->key == name) return std::u16string(entry->text);
    }
    return utility::Utf8ToUTF16(equals == std::string_view::npos ? name : key.substr(equals + 1));
}

}  // namespace mtkcore::config
