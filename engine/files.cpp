// SPDX-License-Identifier: MIT
#include "engine/files.h"

#include "engine/error.h"

#include <fstream>
#include <iterator>
#include <system_error>

namespace vireo {

std::filesystem::path pathOf(std::string_view utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

std::string utf8Of(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

std::string readFile(const std::string& path) {
    std::error_code error;
    std::ifstream file(pathOf(path), std::ios::binary);
    if (!file || std::filesystem::is_directory(pathOf(path), error)) throw Error("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace vireo
