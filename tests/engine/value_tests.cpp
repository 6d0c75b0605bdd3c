// SPDX-License-Identifier: MIT
#include "engine/error.h"
#include "engine/settings/css_colors.h"
#include "engine/settings/filter_settings.h"
#include "engine/settings/parameter_value.h"
#include "tests/engine/support/fake_filters.h"

#include <gmock/gmock.h>

namespace vireo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

const Catalogue& catalogue() {
    static const Catalogue fake(test::fakeFilters());
    return fake;
}

FramePosition at(std::int64_t frame, double rate = 25) {
    return {frame, 1000, static_cast<double>(frame) / rate, rate, Interlacing::Progressive};
}

/// The error's sentence, or "" where there is none.
std::string errorOf(const std::string& text) {
    try {
        parseFilterText(catalogue(), text);
        return "";
    } catch (const Error& error) {
        EXPECT_EQ(error.status(), 2) << text;
        return error.what();
    }
}

std::vector<int> recordOf(const std::string& text, std::int64_t frame = 0) {
    const auto record = parseFilterText(catalogue(), text).record(at(frame));
    return {record.begin(), record.end()};
}

TEST(ClipTime, ReadsItsFourForms) {
    struct Case {
        const char* text;
        double seconds;
    };
    for (const Case& c : {Case{"5s", 5},
                          {"2.5", 2.5},
                          {" 0 ", 0},
                          {"1:02:03.5", 3723.5},
                          {"2:03", 123},
                          {"0.25 s", 0.25},
                          {"100f", 4}}) {
        const auto time = parseClipTime(c.text);
        ASSERT_TRUE(time) << c.text;
        EXPECT_DOUBLE_EQ(time->secondsAt(25), c.seconds) << c.text;
    }
    for (const char* text : {"", "s", "f", "-1s", "1.5f", "-3f", "1:60", "1:60:00", "1:2:3:4", "1e3", "5 m",
                             "x", "1:+2", ":5", "nan", "99999999999999999999f"}) {
        EXPECT_FALSE(parseClipTime(text)) << text;
    }
}

TEST(FilterText, StoresEveryKindOfValue) {
    EXPECT_THAT(recordOf("Add Value"), ElementsAre(5, 0, 255, 0, 0, 0, 1, 0x40, 0x9C, 7, 7, 7));
    EXPECT_THAT(recordOf(" addval : am = -2 , tint=rgb( 1, 2 ,3), on = off, level=40000"),
                ElementsAre(0xFE, 0xFF, 1, 2, 3, 0, 0, 0x40, 0x9C, 7, 7, 7));
    struct Case {
        const char* text;
        std::int64_t amount;
    };
    // The display goes from 0 to 200 over -100 to 100; halves go up.
    for (const Case& c :
         {Case{"0%", -100}, {"100%", 0}, {"200%", 100}, {"50.5%", -49}, {"50.4 %", -50}, {"+7", 7}}) {
        const auto record = parseFilterText(catalogue(), std::string("addval:amount=") + c.text).record({});
        EXPECT_EQ(readValue(test::fakeFilters()[0].properties.parameters[0], record), c.amount) << c.text;
    }
    for (const char* text : {"on", "True", "YES", "1"})
        EXPECT_EQ(recordOf(std::string("addv:on=") + text)[6], 1) << text;
    for (const char* text : {"Off", "false", "no", "0"})
        EXPECT_EQ(recordOf(std::string("addv:on=") + text)[6], 0) << text;
    for (const char* text : {"#0A14ff", "rgb(10,20,255)", "RGB (10, 20, 255)"}) {
        const auto record = recordOf(std::string("addv:tint=") + text);
        EXPECT_THAT(std::vector<int>(record.begin() + 2, record.begin() + 6), ElementsAre(10, 20, 255, 0))
            << text;
    }
    EXPECT_EQ(recordOf("addv:tint=RebeccaPurple")[3], 0x33);
    EXPECT_EQ(cssColor("aliceblue"), 0xF0F8FFu);
    EXPECT_EQ(cssColor("yellowgreen"), 0x9ACD32u);
    EXPECT_EQ(cssColor("nocolour"), std::nullopt);
}

TEST(FilterText, RefusesWithTheNameAndTheEnds) {
    for (const char* value : {"101", "-101", "1.5", "", "12x", "0x10", "99999999999999999999", "--1"}) {
        EXPECT_EQ(
            errorOf(std::string("addv:amount=") + value),
            std::string("Amount of Add Value takes whole numbers from -100 to 100, not \"") + value + '"');
    }
    EXPECT_EQ(errorOf("addv:amount=201%"), "Amount of Add Value goes from 0% to 200%, not \"201%\"");
    EXPECT_EQ(errorOf("addv:level=2%"),
              "Level of Add Value takes no per cent, only whole numbers from 0 to 40000");
    EXPECT_THAT(errorOf("addv:on=maybe"), HasSubstr("On of Add Value is a check box"));
    for (const char* value :
         {"#12345", "#12345g", "rgb(1,2)", "rgb(1,2,256)", "rgb(1,2,3,4)", "rgb(1,2,3", "blurple", "5"}) {
        EXPECT_THAT(errorOf(std::string("addv:tint=") + value), HasSubstr("is a colour and takes #rrggbb"))
            << value;
    }
    EXPECT_THAT(errorOf("addv:amont=1"),
                StartsWith("Add Value has no parameter \"amont\"; the nearest are Amount, "));
    EXPECT_THAT(errorOf("echo:x=1"), HasSubstr("Echo has no parameters"));
    EXPECT_THAT(errorOf("addv:fro=1"), HasSubstr("no parameter \"fro\""));  // from must be written out
    EXPECT_THAT(errorOf("addv:amount"), HasSubstr("not of the form parameter=value"));
    EXPECT_THAT(errorOf("addv:amount=1,,on=1"), HasSubstr("not of the form parameter=value"));
    EXPECT_EQ(errorOf("addv:amount=1,am=2"), "Amount of Add Value is given twice");
    EXPECT_EQ(errorOf("addv:mix=1,mix=2"), "mix of Add Value is given twice");
    EXPECT_THAT(errorOf("addv:mix=101"), HasSubstr("per cents from 0 to 100"));
    EXPECT_THAT(errorOf("addv:from=soon"), HasSubstr("takes a time like"));
    EXPECT_EQ(errorOf("echo:"), "");
}

TEST(KeyFrames, InterpolateHoldAndEase) {
    struct Case {
        const char* text;
        std::int64_t frame, value;
    };
    const Case cases[] = {
        {"0@0s..100@4s..50@8s", 0, 0},
        {"0@0s..100@4s..50@8s", 25, 25},
        {"0@0s..100@4s..50@8s", 100, 100},
        {"0@0s..100@4s..50@8s", 150, 75},
        {"0@0s..100@4s..50@8s", 900, 50},
        {"7@50f..9@54f", 0, 7},
        {"7@50f..9@54f", 51, 8},
        {"-1@0f..0@2f", 1, 0},  // half up
        {"0@0f..5@10f", 1, 1},
        {"0@0f..5@10f", 2, 1},
        {"0@0..1@0.2..5@1.2", 15, 3},
        {"0@0f..hold..80@10f", 9, 0},
        {"0@0f..hold..80@10f", 10, 80},
        {"0@0f..smooth..64@8f", 2, 10},
        {"0@0f ..SMOOTH.. 64 @ 8f", 4, 32},
        {"0@0f..smooth..64@8f", 6, 54},
        {"0@1s..100@75f", 50, 50},
        {"100%@0f..150%@10f", 4, 20},
        {"42@3s", 9, 42},
    };
    for (const Case& c : cases) {
        const auto track = parseValueTrack(test::fakeFilters()[0].properties.parameters[0], "Amount", c.text);
        EXPECT_EQ(track.at(at(c.frame)), c.value) << c.text << " at " << c.frame;
    }
    const auto color = parseValueTrack(test::fakeFilters()[0].properties.parameters[1], "Tint",
                                       "#0000ff@0f..rgb(255,10,0)@2f");
    EXPECT_EQ(color.at(at(1)), 0x80 | 5 << 8 | 0x80 << 16);
}

TEST(KeyFrames, FollowTimeStampsOfVariableFrameRates) {
    const auto track =
        parseValueTrack(test::fakeFilters()[0].properties.parameters[0], "Amount", "0@0s..100@10s");
    EXPECT_EQ(track.at({3, 0, 7.5, 25, Interlacing::Progressive}), 75);
}

TEST(KeyFrames, RefuseDisorder) {
    EXPECT_THAT(errorOf("addv:amount=1@5s..2@5s"), HasSubstr("5s does not come after 5s"));
    EXPECT_THAT(errorOf("addv:amount=1@5f..2@4f"), HasSubstr("4f does not come after 5f"));
    EXPECT_THAT(errorOf("addv:amount=1@5f..2"), HasSubstr("names no time"));
    EXPECT_THAT(errorOf("addv:amount=1@5f..2@x"), HasSubstr("which is no time"));
    EXPECT_THAT(errorOf("addv:amount=1@5f..300@9f"), HasSubstr("from -100 to 100"));
    EXPECT_THAT(errorOf("addv:on=1@0f..0@5f"), HasSubstr("is a check box"));
    const auto mixed = parseFilterText(catalogue(), "addv:amount=1@1s..2@20f");
    EXPECT_THROW(mixed.record(at(0)), Error);
    EXPECT_NO_THROW(mixed.record(at(0, 10)));
}

TEST(Values, AreWrittenSoThatTheyReadTheSame) {
    const auto& parameters = test::fakeFilters()[0].properties.parameters;
    for (const char* text : {"-7", "0@0s..100@5s..hold..-3@1:02:03.5..smooth..1@2000f"}) {
        EXPECT_EQ(valueText(parameters[0], parseValueTrack(parameters[0], "Amount", text)), text);
    }
    EXPECT_EQ(valueText(parameters[1], parseValueTrack(parameters[1], "Tint", "Red@0s .. lime@1s")),
              "#ff0000@0s..#00ff00@1s");
    EXPECT_EQ(valueText(parameters[2], 1), "true");
    EXPECT_EQ(mixText(parseMix("mix", " 50 % ")), "50%");
}

TEST(SettingsBytes, TakeTheHandleOrTheParameters) {
    FilterSettings settings = parseFilterText(catalogue(), "addv:on=off");
    const std::vector<std::uint8_t> whole = {1, 0, 1, 2, 3, 0, 1, 9, 0, 8, 8, 8};
    settings.setBytes(whole);
    EXPECT_THAT(settings.record({}),
                ElementsAre(1, 0, 1, 2, 3, 0, 0, 9, 0, 8, 8, 8));  // what was assigned counts
    settings.setBytes(std::span(whole).first(9));
    EXPECT_THROW(settings.setBytes(std::span(whole).first(10)), Error);
    settings.assignFromBytes();
    EXPECT_EQ(settings.assignments().size(), 4u);

    const std::vector<std::uint8_t> outside = {0xFF, 0x7F, 0, 0, 0, 0, 0, 0, 0};
    FilterSettings odd = parseFilterText(catalogue(), "addv");
    odd.setBytes(outside);
    EXPECT_THROW(odd.assignFromBytes(), Error);
}

}  // namespace
}  // namespace vireo
