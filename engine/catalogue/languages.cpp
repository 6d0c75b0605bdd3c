// SPDX-License-Identifier: MIT
#include "engine/catalogue/languages.h"

#include "engine/error.h"
#include "engine/text.h"

namespace vireo {

std::uint16_t languageId(std::string_view name) {
    for (const LanguageName& language : languages) {
        if (language.name == name) return language.id;
    }
    throw Error(Fault::Usage, "--language takes en, fr, de, ja, es, it or ko, not " + inQuotes(name));
}

}  // namespace vireo
