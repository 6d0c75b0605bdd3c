// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_FILES_H
#define VIREO_ENGINE_FILES_H

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace vireo {

/// Names of files are UTF-8 on every platform.
std::filesystem::path pathOf(std::string_view utf8);
std::string utf8Of(const std::filesystem::path& path);

/// A whole file. Throws Error.
std::string readFile(const std::string& path);

/// What lies in a folder; nothing where there is none.
std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder);

}  // namespace vireo

#endif
