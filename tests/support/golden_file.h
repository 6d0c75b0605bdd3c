// SPDX-License-Identifier: MIT
// Files of lines "name: what is due" that lie beside tests. With VIREO_RENEW_CHECKSUMS in the environment
// they are written anew.
#ifndef VIREO_TESTS_SUPPORT_GOLDEN_FILE_H
#define VIREO_TESTS_SUPPORT_GOLDEN_FILE_H

#include <cstdint>
#include <map>
#include <span>
#include <string>

using GoldenLines = std::map<std::string, std::string>;

GoldenLines goldenLines(const std::string& path);

/// Fails for each line that differs, is missing or is due no more. `head`: what a new file begins with.
void expectGolden(const std::string& path, const std::string& head, const GoldenLines& lines);

/// CRC-32 as in PNG and zip.
class Checksum {
public:
    void add(std::span<const std::uint8_t> bytes);
    std::uint32_t value() const { return ~rest_; }
    /// In eight digits.
    std::string text() const;

private:
    std::uint32_t rest_ = 0xFFFFFFFF;
};

#endif
