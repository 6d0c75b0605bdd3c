// SPDX-License-Identifier: MIT
#include "engine/error.h"
#include "engine/files.h"

#include <fstream>
#include <iterator>
#include <system_error>

namespace vireo {

std::string readFile(const std::string& path) {
    std::error_code error;
    std::ifstream file(pathOf(path), std::ios::binary);
    if (!file || std::filesystem::is_directory(pathOf(path), error)) throw Error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(folder, error))
        files.push_back(entry.path());
    return files;
}

}  // namespace vireo
