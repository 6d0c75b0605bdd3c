// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_FILES_H
#define VIREO_APP_FILES_H

#include <filesystem>
#include <string>
#include <string_view>

namespace vireo {

/// Names on the command line are UTF-8 on every platform.
std::filesystem::path pathOf(std::string_view utf8);
std::string utf8Of(const std::filesystem::path& path);

/// A whole file. Throws RenderError.
std::string readFile(const std::string& path);

/// Throws RenderError where the file exists.
void refuseExisting(const std::string& path);

/// Writes into a file that is there or is made. Throws RenderError with the name that people know.
void writeBytes(const std::filesystem::path& path, std::string_view bytes, const std::string& shown);

/// Writes a whole file, which appears when it is whole; an existing one is refused unless `overwrite`. Throws
/// RenderError.
void writeFile(const std::string& path, std::string_view content, bool overwrite);

}  // namespace vireo

#endif
