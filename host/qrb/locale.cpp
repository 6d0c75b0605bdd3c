// SPDX-License-Identifier: MIT
#include "host/qrb/locale.h"

#include "host/mtkcore/decimal_text.h"
#include "host/qrb/language.h"

#include <string>

namespace QRB {
namespace {

class Punctuation final : public std::numpunct<wchar_t> {
    wchar_t do_decimal_point() const override { return static_cast<wchar_t>(Locale::DecimalSign()); }
    std::string do_grouping() const override { return {}; }
};

constexpr std::u16string_view blanks = u" \t\u00A0\u202F\u3000";

}  // namespace

char16_t Locale::DecimalSign() {
    switch (primaryLanguage(GetLanguageID())) {
        case kLanguage_French:
        case kLanguage_German:
        case kLanguage_Spanish:
        case kLanguage_Italian: return u',';
        default: return u'.';
    }
}

std::locale Locale::Native() { return {std::locale::classic(), new Punctuation}; }

bool Locale::GetValueFromDisplayString(std::u16string_view text, double* value) {
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::u16string_view::npos) return false;
    text = text.substr(first, text.find_last_not_of(blanks) - first + 1);

    std::string number;
    if (text.front() == u'+' || text.front() == u'-') {
        if (text.front() == u'-') number = "-";
        text.remove_prefix(1);
    }
    bool point = false;
    bool digits = false;
    for (const char16_t character : text) {
        if (character >= u'0' && character <= u'9') {
            digits = true;
            number.push_back(static_cast<char>(character));
        } else if ((character == u'.' || character == DecimalSign()) && !point) {
            point = true;
            number.push_back('.');
        } else {
            return false;
        }
    }
    const auto parsed = digits ? mtkcore::utility::numberOf(number) : std::nullopt;
    if (!parsed) return false;
    *value = *parsed;
    return true;
}

}  // namespace QRB
