// SPDX-License-Identifier: MIT
// Settings files: a chain of filters with their values as JSON, the 44-byte files of the Levels dialog, and
// bytes of settings handles.
#ifndef VIREO_ENGINE_SETTINGS_SETTINGS_FILE_H
#define VIREO_ENGINE_SETTINGS_SETTINGS_FILE_H

#include "engine/settings/filter_settings.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// Reads the text of a settings file. Throws Error that names `file` and the place of what is wrong.
std::vector<FilterSettings> parseSettings(const Catalogue& catalogue, const std::string& file,
                                          std::string_view text);

/// The sentence that a settings file says about itself; empty where it says none. Throws Error.
std::string settingsDescription(const std::string& file, std::string_view text);

/// The text of a settings file for a chain. Filters set from bytes have all their parameters in it. Throws
/// Error where they hold what no text can say.
std::string settingsText(std::vector<FilterSettings> chain);

/// The filter that Levels files are for.
inline constexpr char levelsFilter[] = "Levels";

/// Whether a file begins as Levels files do.
bool isLevelsFile(std::string_view content);

/// The Levels file of 40 bytes of settings.
std::string levelsFile(std::span<const std::uint8_t> settings);

/// The bytes that follow the magic of a Levels file. Throws Error that names `file`.
std::vector<std::uint8_t> parseLevelsFile(const std::string& file, std::string_view content);

/// What "hex:…" or the file of that name holds. Throws Error.
std::vector<std::uint8_t> readSettingsBytes(const std::string& source);

}  // namespace vireo

#endif
