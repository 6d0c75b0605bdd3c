// SPDX-License-Identifier: MIT
// Of a program that has no files but those that are linked into it.
#include "engine/error.h"
#include "engine/files.h"
#include "engine/linked_files.h"

namespace vireo {

std::string readFile(const std::string& path) {
    for (const LinkedFile& file : linkedFiles()) {
        if (file.path == path) return std::string(file.content);
    }
    throw Error("cannot read " + path);
}

std::vector<std::filesystem::path> filesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    for (const LinkedFile& file : linkedFiles()) {
        if (pathOf(file.path).parent_path() == folder) files.push_back(pathOf(file.path));
    }
    return files;
}

}  // namespace vireo
