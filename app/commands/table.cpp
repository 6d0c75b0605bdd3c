// SPDX-License-Identifier: MIT
#include "app/commands/table.h"

#include "app/base/terminal.h"

#include <algorithm>
#include <iostream>

namespace vireo {
namespace {

/// Characters on a line, counted as code points of UTF-8.
std::size_t textWidth(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace

void printTable(const std::vector<TableRow>& rows, const std::string& indentation, std::size_t nameColumn) {
    std::vector<std::size_t> widths;
    for (const TableRow& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], textWidth(row[i]));
    }
    for (const TableRow& row : rows) {
        std::string line = indentation;
        for (std::size_t i = 0; i < row.size(); ++i) {
            const bool isHeading = &row == &rows.front();
            line += isHeading         ? Terminal::output().styled(Style::Heading, row[i])
                    : i == nameColumn ? Terminal::output().styled(Style::Name, row[i])
                                      : row[i];
            if (i + 1 < row.size()) line += std::string(widths[i] - textWidth(row[i]) + 2, ' ');
        }
        std::cout << line << '\n';
    }
}

}  // namespace vireo
