// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_FILES_H
#define VIREO_APP_BASE_FILES_H

#include "engine/files.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

namespace vireo {

/// Why something failed, in the same words on every system.
std::string reasonOf(const std::error_code& error);

/// Windows refuses what is done to a file that a program has open; elsewhere no file is held so.
bool isHeld(const std::filesystem::path& path);

/// Removes a folder with all that is in it, as far as that can be.
void removeFolder(const std::filesystem::path& folder);

/// Throws Error where the file exists.
void refuseExisting(const std::string& path);

/// Writes into a file that is there or is made. Throws Error with the name that people know.
void writeBytes(const std::filesystem::path& path, std::string_view bytes, const std::string& shown);

/// Writes a whole file, which appears when it is whole; an existing one is refused unless `overwrite`. Throws
/// Error.
void writeFile(const std::string& path, std::string_view content, bool overwrite);

}  // namespace vireo

#endif
