// SPDX-License-Identifier: MIT
#include "engine/text.h"

#include "host/mtkcore/decimal_text.h"

#include <algorithm>
#include <charconv>

namespace vireo {
namespace {

constexpr std::string_view blanks = " \t\r\n";

}  // namespace

std::string_view trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return text.substr(text.size());
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
}

std::string inQuotes(std::string_view text) { return '"' + std::string(text) + '"'; }

std::string enumeration(std::span<const std::string> items, std::string_view lastWord) {
    std::string text;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) text += i + 1 == items.size() ? " " + std::string(lastWord) + " " : ", ";
        text += items[i];
    }
    return text;
}

bool isDigits(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

std::optional<std::int64_t> parseWholeNumber(std::string_view text) {
    if (text.starts_with('+') && isDigits(text.substr(1))) text.remove_prefix(1);
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
    return value;
}

std::optional<double> parseDecimal(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    const std::size_t firstDigit = text.starts_with('-') ? 1 : 0;
    const std::string_view digits = text.substr(firstDigit);
    const bool isNumber = digits.find_first_not_of("0123456789.") == std::string_view::npos &&
                          digits.find_first_of("0123456789") != std::string_view::npos &&
                          std::count(digits.begin(), digits.end(), '.') <= 1;
    return isNumber ? mtkcore::utility::numberOf(std::string(text)) : std::nullopt;
}

}  // namespace vireo
