// SPDX-License-Identifier: MIT
// Numbers and their decimal text with a full stop, whatever the C library's locale.
#ifndef VIREO_HOST_MTKCORE_DECIMAL_TEXT_H
#define VIREO_HOST_MTKCORE_DECIMAL_TEXT_H

#include <charconv>
#include <cstddef>
#include <optional>
#include <string>

#if !defined(__cpp_lib_to_chars)
#include <cmath>
#include <cstdio>
#include <cstdlib>
#endif

namespace mtkcore::utility {

#if defined(__cpp_lib_to_chars)

/// The number with `decimals` digits behind the point, all of them exact.
inline std::string fixedText(double value, int decimals) {
    constexpr std::size_t longestWhole = 320;
    std::string text(longestWhole + static_cast<std::size_t>(decimals), '\0');
    const auto written =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, decimals);
    text.resize(static_cast<std::size_t>(written.ptr - text.data()));
    return text;
}

/// The number of a text of digits, signs and one point; none beyond what doubles hold.
inline std::optional<double> numberOf(const std::string& text) {
    double number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    return read.ec == std::errc() ? std::optional(number) : std::nullopt;
}

#else  // The C library of WebAssembly has one locale.

inline std::string fixedText(double value, int decimals) {
    const int length = std::snprintf(nullptr, 0, "%.*f", decimals, value);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::snprintf(text.data(), text.size() + 1, "%.*f", decimals, value);
    return text;
}

inline std::optional<double> numberOf(const std::string& text) {
    const double number = std::strtod(text.c_str(), nullptr);
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
}

#endif

}  // namespace mtkcore::utility

#endif
