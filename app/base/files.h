// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_FILES_H
#define VIREO_APP_BASE_FILES_H

#include "engine/files.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace vireo {

/// Throws Error where the file exists.
void refuseExisting(const std::string& path);

/// Writes into a file that is there or is made. Throws Error with the name that people know.
void writeBytes(const std::filesystem::path& path, std::string_view bytes, const std::string& shown);

/// Writes a whole file, which appears when it is whole; an existing one is refused unless `overwrite`. Throws
/// Error.
void writeFile(const std::string& path, std::string_view content, bool overwrite);

}  // namespace vireo

#endif
