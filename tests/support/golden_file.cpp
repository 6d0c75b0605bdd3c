// SPDX-License-Identifier: MIT
#include "tests/support/golden_file.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

GoldenLines goldenLines(const std::string& path) {
    GoldenLines stored;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const std::size_t colon = line.find(": ");
        if (!line.starts_with('#') && colon != std::string::npos)
            stored[line.substr(0, colon)] = line.substr(colon + 2);
    }
    return stored;
}

void expectGolden(const std::string& path, const std::string& head, const GoldenLines& lines) {
    if (std::getenv("VIREO_RENEW_CHECKSUMS") != nullptr) {
        std::ofstream file(path, std::ios::binary);
        file << head;
        for (const auto& [name, line] : lines) file << name << ": " << line << '\n';
        ASSERT_TRUE(file.flush()) << path << " cannot be written";
    }
    GoldenLines stored = goldenLines(path);
    for (const auto& [name, line] : lines) {
        const auto found = stored.find(name);
        EXPECT_EQ(line, found == stored.end() ? "missing in " + path : found->second) << name;
        if (found != stored.end()) stored.erase(found);
    }
    for (const auto& [name, line] : stored) ADD_FAILURE() << name << " is due no more";
}

void Checksum::add(std::span<const std::uint8_t> bytes) {
    for (const std::uint8_t byte : bytes) {
        rest_ ^= byte;
        for (int bit = 0; bit < 8; ++bit) rest_ = rest_ >> 1 ^ (rest_ & 1 ? 0xEDB88320u : 0u);
    }
}

std::string Checksum::text() const {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%08x", static_cast<unsigned>(value()));
    return digits;
}
