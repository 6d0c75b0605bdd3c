// SPDX-License-Identifier: MIT
#include "host/mtkcore/localizer.h"
#include "host/mtkcore/utility.h"
#include "host/qrb/language.h"
#include "host/qrb/locale.h"
#include "host/vireo_host.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>

namespace {

enum : std::uint16_t {
    english = 0x0409,
    french = 0x040C,
    canadianFrench = 0x0C0C,
    german = 0x0407,
    japanese = 0x0411
};

class Localisation : public testing::Test {
protected:
    ~Localisation() override { vireoHostSetLanguage(english); }

    static std::string translated(std::uint16_t language, const char* key) {
        vireoHostSetLanguage(language);
        return mtkcore::utility::UTF16ToUtf8(mtkcore::config::Localizer::Get().Translate(key));
    }

    static std::string number(std::uint16_t language, double value, int decimals) {
        vireoHostSetLanguage(language);
        return mtkcore::utility::UTF16ToUtf8(mtkcore::utility::NumberToString(value, 1, decimals, 0, 31));
    }
};

TEST_F(Localisation, TextsFollowTheLanguageAndFallBackToTheDefault) {
    constexpr char name[] = "$$$/Strata/VireoFilters/Solarize/Name=Solarize";
    EXPECT_EQ(translated(english, name), "Solarize");
    EXPECT_EQ(translated(canadianFrench, name), "Solarisation");
    EXPECT_EQ(translated(japanese, name), "ソラリゼーション");
    EXPECT_EQ(translated(german, "$$$/Nobody/Knows=This = that"), "This = that");
    EXPECT_EQ(translated(german, "Obsolete"), "Obsolete");
}

TEST_F(Localisation, NumbersHaveExactlyTheirDecimalsAndRoundHalvesAway) {
    EXPECT_EQ(number(french, 1.15, 2), "1,15");
    EXPECT_EQ(number(english, 0.125, 2), "0.13");
    EXPECT_EQ(number(english, -0.125, 2), "-0.13");
    EXPECT_EQ(number(english, 0.1249999999, 2), "0.12");
    EXPECT_EQ(number(english, 99.995, 2), "100.00");  // the double lies above the half
    EXPECT_EQ(number(german, 1234567.5, 0), "1234568");
    EXPECT_EQ(number(english, -0.001, 2), "0.00");
}

TEST_F(Localisation, TypedNumbersParseWholeOrNotAtAll) {
    const struct {
        std::uint16_t language;
        std::u16string_view text;
        double value;
    } good[] = {{english, u"1.15", 1.15}, {french, u" 1,15 ", 1.15}, {french, u"1.15", 1.15},
                {english, u"+.5", .5},    {german, u"-2,", -2},      {japanese, u"\u30003", 3}};
    for (const auto& row : good) {
        vireoHostSetLanguage(row.language);
        double value = NAN;
        EXPECT_TRUE(QRB::Locale::GetValueFromDisplayString(row.text, &value));
        EXPECT_EQ(value, row.value);
    }
    vireoHostSetLanguage(english);
    for (const std::u16string_view text :
         {u"", u" ", u"-", u".", u"1,5", u"1 000", u"1e3", u"--1", u"1.2.3", u"x"}) {
        double value = 7;
        EXPECT_FALSE(QRB::Locale::GetValueFromDisplayString(text, &value));
        EXPECT_EQ(value, 7);
    }
}

TEST_F(Localisation, StreamsWriteTheLanguagesDecimalSignAndGroupNothing) {
    for (const auto& [language, text] : {std::pair(english, L"1234567.25"), {german, L"1234567,25"}}) {
        vireoHostSetLanguage(language);
        std::wostringstream stream;
        stream.imbue(QRB::Locale::Native());
        stream << std::fixed << std::setprecision(2) << 1234567.25;
        EXPECT_EQ(stream.str(), text);
    }
}

TEST(Utf, SurrogatesAndDamageConvert) {
    const std::string text = "aé€𝄞";
    EXPECT_EQ(mtkcore::utility::Utf8ToUTF16(text), u"aé€𝄞");
    EXPECT_EQ(mtkcore::utility::UTF16ToUtf8(u"aé€𝄞"), text);
    EXPECT_EQ(mtkcore::utility::WcharToUTF16(L"aé€𝄞"), u"aé€𝄞");
    EXPECT_EQ(mtkcore::utility::Utf8ToUTF16("a\xFF\xE2\x82"), u"a\uFFFD\uFFFD");
    // A tail alone, a tail that is none, a surrogate, beyond the last character, and longer than need be.
    EXPECT_EQ(mtkcore::utility::Utf8ToUTF16("\x80"
                                            "b"),
              u"\uFFFDb");
    EXPECT_EQ(mtkcore::utility::Utf8ToUTF16("\xC3"
                                            "b"),
              u"\uFFFDb");
    EXPECT_EQ(mtkcore::utility::Utf8ToUTF16("\xED\xA0\x80"), u"\uFFFD");
    EXPECT_EQ(mtkcore::utility::Utf8ToUTF16("\xF4\x90\x80\x80"), u"\uFFFD");
    EXPECT_EQ(mtkcore::utility::Utf8ToUTF16("\xE0\x80\xAF"), u"\uFFFD");
    EXPECT_EQ(mtkcore::utility::UTF16ToUtf8(std::u16string{u'a', 0xD800, u'b'}), "a\uFFFDb");
    EXPECT_EQ(mtkcore::utility::UTF16ToUtf8(std::u16string{0xDC00, 0xD800}), "\uFFFD\uFFFD");
}

}  // namespace
