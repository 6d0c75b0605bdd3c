// SPDX-License-Identifier: MIT
#include "host/mtkcore/utility.h"

#include "host/mtkcore/decimal_text.h"
#include "host/qrb/locale.h"

#include <cmath>
#include <cstdint>

namespace mtkcore::utility {
namespace {

constexpr char32_t replacement = 0xFFFD;

void appendUtf16(std::u16string& text, char32_t character) {
    if (character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) character = replacement;
    if (character < 0x10000) {
        text.push_back(static_cast<char16_t>(character));
    } else {
        text.push_back(static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10)));
        text.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
    }
}

void appendUtf8(std::string& text, char32_t character) {
    const auto tail = [&](int shift) {
        text.push_back(static_cast<char>(0x80 | (character >> shift & 0x3F)));
    };
    if (character < 0x80) {
        text.push_back(static_cast<char>(character));
    } else if (character < 0x800) {
        text.push_back(static_cast<char>(0xC0 | character >> 6));
        tail(0);
    } else if (character < 0x10000) {
        text.push_back(static_cast<char>(0xE0 | character >> 12));
        tail(6);
        tail(0);
    } else {
        text.push_back(static_cast<char>(0xF0 | character >> 18));
        tail(12);
        tail(6);
        tail(0);
    }
}

/// Takes one character off the front of a UTF-8 text.
char32_t takeUtf8(std::string_view& text) {
    const auto first = static_cast<unsigned char>(text.front());
    text.remove_prefix(1);
    if (first < 0x80) return first;
    const int tails = first >= 0xF0 && first < 0xF5 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
    if (tails == 0 || first >= 0xF5) return replacement;
    char32_t character = first & (0x3F >> tails);
    for (int i = 0; i < tails; ++i) {
        if (text.empty() || (static_cast<unsigned char>(text.front()) & 0xC0) != 0x80) return replacement;
        character = character << 6 | (static_cast<unsigned char>(text.front()) & 0x3F);
        text.remove_prefix(1);
    }
    constexpr char32_t smallest[] = {0, 0x80, 0x800, 0x10000};
    return character < smallest[tails] ? replacement : character;
}

}  // namespace

std::u16string Utf8ToUTF16(std::string_view text) {
    std::u16string result;
    while (!text.empty()) appendUtf16(result, takeUtf8(text));
    return result;
}

std::string UTF16ToUtf8(std::u16string_view text) {
    std::string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t character = text[i];
        const bool high = character >= 0xD800 && character < 0xDC00;
        if (high && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000) {
            character = 0x10000 + ((character - 0xD800) << 10) + (text[++i] - 0xDC00U);
        } else if (character >= 0xD800 && character < 0xE000) {
            character = replacement;
        }
        appendUtf8(result, character);
    }
    return result;
}

std::u16string WcharToUTF16(std::wstring_view text) {
    std::u16string result;
    for (const wchar_t character : text) {
        if constexpr (sizeof(wchar_t) == 2) {
            result.push_back(static_cast<char16_t>(character));
        } else {
            appendUtf16(result, static_cast<char32_t>(character));
        }
    }
    return result;
}

std::u16string NumberToString(double value, int, int decimals, int, int) {
    // All digits of the number, so that what lies behind the last one kept is known exactly.
    constexpr int allDecimals = 1074;
    std::string text = fixedText(std::abs(value), allDecimals);
    const std::size_t point = text.find('.');
    if (point != std::string::npos) {
        const std::size_t end = point + 1 + static_cast<std::size_t>(decimals);
        const bool up = end < text.size() && text[end] >= '5';
        text.resize(decimals == 0 ? point : end);
        for (std::size_t i = text.size(); up && i-- > 0;) {
            if (text[i] == '.') continue;
            if (text[i] != '9') {
                ++text[i];
                break;
            }
            text[i] = '0';
            if (i == 0) text.insert(0, 1, '1');
        }
    }
    const bool negative = std::signbit(value) && text.find_first_of("123456789") != std::string::npos;
    std::u16string result(negative ? u"-" : u"");
    for (const char character : text) {
        result.push_back(character == '.' ? QRB::Locale::DecimalSign() : static_cast<char16_t>(character));
    }
    return result;
}

}  // namespace mtkcore::utility
