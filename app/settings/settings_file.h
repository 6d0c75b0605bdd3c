// SPDX-License-Identifier: MIT
// Settings files: a chain of filters with their values as JSON, the 44-byte files of the Levels dialog, and
// bytes of settings handles.
#ifndef VIREO_APP_SETTINGS_SETTINGS_FILE_H
#define VIREO_APP_SETTINGS_SETTINGS_FILE_H

#include "app/settings/filter_settings.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// Reads the text of a settings file. Throws RenderError that names `file` and the place of what is wrong.
std::vector<FilterSettings> parseSettings(const Catalogue& catalogue, const std::string& file,
                                          std::string_view text);

/// The sentence that a settings file says about itself; empty where it says none. Throws RenderError.
std::string settingsDescription(const std::string& file, std::string_view text);

/// The text of a settings file for a chain. Filters set from bytes have all their parameters in it.
std::string settingsText(const std::vector<FilterSettings>& chain);

/// The bytes that follow the magic of a Levels file. Throws RenderError that names `file`.
std::vector<std::uint8_t> parseLevelsFile(const std::string& file, std::string_view content);

/// What "hex:…" or the file of that name holds. Throws RenderError.
std::vector<std::uint8_t> readSettingsBytes(const std::string& source);

}  // namespace vireo

#endif
