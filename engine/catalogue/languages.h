// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CATALOGUE_LANGUAGES_H
#define VIREO_ENGINE_CATALOGUE_LANGUAGES_H

#include "host/qrb/language.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vireo {

/// A language of the catalogues.
struct LanguageName {
    std::string_view name;  ///< "en".
    std::uint16_t id;       ///< As QRB::GetLanguageID() answers it.
};

inline constexpr LanguageName languages[] = {
    {"en", QRB::makeLanguageID(QRB::kSubLanguage_Default, QRB::kLanguage_English)},
    {"fr", QRB::makeLanguageID(QRB::kSubLanguage_French, QRB::kLanguage_French)},
    {"de", QRB::makeLanguageID(QRB::kSubLanguage_German, QRB::kLanguage_German)},
    {"ja", QRB::makeLanguageID(QRB::kSubLanguage_Default, QRB::kLanguage_Japanese)},
    {"es", QRB::makeLanguageID(QRB::kSubLanguage_Spanish, QRB::kLanguage_Spanish)},
    {"it", QRB::makeLanguageID(QRB::kSubLanguage_Italian, QRB::kLanguage_Italian)},
    {"ko", QRB::makeLanguageID(QRB::kSubLanguage_Korean, QRB::kLanguage_Korean)}};

/// The id of a language's name. Throws Error of wrong usage.
std::uint16_t languageId(std::string_view name);

}  // namespace vireo

#endif
