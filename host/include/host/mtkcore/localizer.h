// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_MTKCORE_LOCALIZER_H
#define VIREO_HOST_MTKCORE_LOCALIZER_H

#include "host/host_export.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace mtkcore::config {

/// The host's texts in the language of its user interface.
class VIREO_HOST_API Localizer {
public:
    static const Localizer& Get();

    /// The text of a key such as "$$$/Strata/VireoFilters/Levels/Title=Levels Settings" in the host's
    /// language: what its catalogue says, else what stands behind "=". A text that is no key comes back as it
    /// is.
    std::u16string Translate(std::string_view key) const;

    /// The same in another language, a word like QRB::GetLanguageID()'s.
    std::u16string Translate(std::string_view key, std::uint16_t language) const;

private:
    Localizer() = default;
};

}  // namespace mtkcore::config

#endif
