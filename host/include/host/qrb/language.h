// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_QRB_LANGUAGE_H
#define VIREO_HOST_QRB_LANGUAGE_H

#include "host/host_export.h"

#include <cstdint>

namespace QRB {

// The Win32 values.
inline constexpr std::uint16_t kLanguage_German = 0x07;
inline constexpr std::uint16_t kLanguage_English = 0x09;
inline constexpr std::uint16_t kLanguage_Spanish = 0x0A;
inline constexpr std::uint16_t kLanguage_French = 0x0C;
inline constexpr std::uint16_t kLanguage_Italian = 0x10;
inline constexpr std::uint16_t kLanguage_Japanese = 0x11;
inline constexpr std::uint16_t kLanguage_Korean = 0x12;

inline constexpr std::uint16_t kSubLanguage_Default = 0x01;
inline constexpr std::uint16_t kSubLanguage_French = 0x01;
inline constexpr std::uint16_t kSubLanguage_German = 0x01;
inline constexpr std::uint16_t kSubLanguage_Spanish = 0x01;
inline constexpr std::uint16_t kSubLanguage_Italian = 0x01;
inline constexpr std::uint16_t kSubLanguage_Korean = 0x01;

constexpr std::uint16_t makeLanguageID(std::uint16_t subLanguage, std::uint16_t language) {
    return static_cast<std::uint16_t>(subLanguage << 10 | language);
}

constexpr std::uint16_t primaryLanguage(std::uint16_t id) { return id & 0x3FF; }

/// The language of the host's user interface, (sub-language << 10) | language.
VIREO_HOST_API std::uint16_t GetLanguageID();

}  // namespace QRB

#endif
