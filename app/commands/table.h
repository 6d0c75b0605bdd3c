// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_COMMANDS_TABLE_H
#define VIREO_APP_COMMANDS_TABLE_H

#include <cstddef>
#include <string>
#include <vector>

namespace vireo {

using TableRow = std::vector<std::string>;

/// Prints columns as wide as their widest cell, two blanks between them, on standard output. The first row
/// holds the headings; the cells of column `nameColumn` are names.
void printTable(const std::vector<TableRow>& rows, const std::string& indentation, std::size_t nameColumn);

}  // namespace vireo

#endif
