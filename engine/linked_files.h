// SPDX-License-Identifier: MIT
// Files that the build links into a program that can open none.
#ifndef VIREO_ENGINE_LINKED_FILES_H
#define VIREO_ENGINE_LINKED_FILES_H

#include <span>
#include <string_view>

namespace vireo {

struct LinkedFile {
    std::string_view path;
    std::string_view content;
};

std::span<const LinkedFile> linkedFiles();

}  // namespace vireo

#endif
