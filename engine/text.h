// SPDX-License-Identifier: MIT
// Pieces of text as people write them.
#ifndef VIREO_ENGINE_TEXT_H
#define VIREO_ENGINE_TEXT_H

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vireo {

/// Without blanks at both ends.
std::string_view trimmed(std::string_view text);

/// In small letters (ASCII).
std::string lowerCase(std::string_view text);

/// In double quotes.
std::string inQuotes(std::string_view text);

/// "A", "A and B", "A, B and C", or with another last word.
std::string enumeration(std::span<const std::string> items, std::string_view lastWord = "and");

/// One digit or more and nothing else.
bool isDigits(std::string_view text);

/// A whole number with an optional sign and nothing else.
std::optional<std::int64_t> parseWholeNumber(std::string_view text);

/// Digits with an optional sign and decimals behind a full stop, whatever the C library's locale.
std::optional<double> parseDecimal(std::string_view text);

}  // namespace vireo

#endif
