// SPDX-License-Identifier: MIT
#include "engine/error.h"
#include "engine/settings/settings_file.h"
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

std::string errorOf(const std::string& text) {
    try {
        parseSettings(catalogue(), "look.json", text);
        return "";
    } catch (const Error& error) {
        return error.what();
    }
}

TEST(SettingsFile, KeepsAChainWithItsOrderAndItsWords) {
    std::vector<FilterSettings> chain;
    for (const char* text :
         {"addv:tint=red,amount=50%,on=no,level=0@0s..40000@5s,mix=50", "echo:from=2.5,to=120f", "addv"}) {
        chain.push_back(parseFilterText(catalogue(), text));
    }
    const std::string text = settingsText(chain);
    EXPECT_EQ(text, R"({
  "vireo": 1,
  "filters": [
    {
      "filter": "Add Value",
      "parameters": {
        "Tint": "#ff0000",
        "Amount": -50,
        "On": false,
        "Level": "0@0s..40000@5s"
      },
      "mix": "50%"
    },
    {
      "filter": "Echo",
      "from": "2.5",
      "to": "120f"
    },
    {
      "filter": "Add Value"
    }
  ]
}
)");
    const auto loaded = parseSettings(catalogue(), "look.json", text);
    EXPECT_EQ(settingsText(loaded), text);
    EXPECT_EQ(loaded[0].record({}), chain[0].record({}));
}

TEST(SettingsFile, TakesWhatTheCommandLineTakes) {
    const auto chain = parseSettings(catalogue(), "look.json",
                                     R"({"vireo": 1, "filters": [{"filter": "addval", "mix": 25,
                                         "parameters": {"amount": "0%", "tint": "lime", "ON": 0}}]})");
    EXPECT_EQ(chain.front().mixAt({}), 25);
    const auto record = chain.front().record({});
    EXPECT_THAT(std::vector<int>(record.begin(), record.begin() + 7),
                ElementsAre(0x9C, 0xFF, 0, 255, 0, 0, 0));
}

TEST(SettingsFile, MayDescribeItself) {
    const std::string text = R"({"vireo": 1, "description": "Grey.", "filters": [{"filter": "echo"}]})";
    EXPECT_EQ(parseSettings(catalogue(), "look.json", text).size(), 1U);
    EXPECT_EQ(settingsDescription("look.json", text), "Grey.");
    EXPECT_EQ(settingsDescription("look.json", R"({"vireo": 1, "filters": []})"), "");
    EXPECT_EQ(settingsDescription("look.json", "[]"), "");
    EXPECT_THROW(settingsDescription("look.json", "{"), Error);
}

TEST(SettingsFile, NamesTheFileAndThePlaceOfDamage) {
    const std::string open = R"({"vireo": 1, "filters": [)", close = "]}";
    struct Case {
        std::string text, message;
    };
    const Case cases[] = {
        {"{\n  \"vireo\": 1,\n  oops", "the settings file look.json: is no valid JSON at line 3, column 3"},
        {"", "the settings file look.json: is no valid JSON at line 1, column 1"},
        {"[]", "the settings file look.json: must be an object"},
        {R"({"filters": []})", "the settings file look.json: \"vireo\" is missing"},
        {R"({"vireo": 2})",
         "the settings file look.json at vireo: is version 2, but only version 1 is known"},
        {R"({"vireo": "1"})", "the settings file look.json at vireo: is version \"1\""},
        {R"({"vireo": )" + std::string(200000, '[') + std::string(200000, ']') + '}',
         "the settings file look.json at vireo: is no number, but only version 1 is known"},
        {R"({"vireo": 1e999})", "the settings file look.json: holds a number that is too large"},
        {R"({"vireo": 1, "filters": []})", "the settings file look.json at filters: must be a list"},
        {R"({"vireo": 1, "filter": []})", "the settings file look.json at filter: is not known here"},
        {R"({"vireo": 1, "description": 3, "filters": []})",
         "the settings file look.json at description: must be a text"},
        {open + "3" + close, "the settings file look.json at filters[0]: must be an object"},
        {open + R"({"filter": "echo"}, {"filter": "nothing"})" + close,
         "the settings file look.json at filters[1].filter: there is no filter \"nothing\""},
        {open + R"({"filter": "addv", "parameters": {"amount": 300}})" + close,
         "the settings file look.json at filters[0].parameters.amount: Amount of Add Value takes whole "
         "numbers from -100"},
        {open + R"({"filter": "addv", "parameters": {"amount": 1.5}})" + close,
         "the settings file look.json at filters[0].parameters.amount: "},
        {open + R"({"filter": "addv", "parameters": {"amount": []}})" + close,
         "the settings file look.json at filters[0].parameters.amount: must be a number"},
        {open + R"({"filter": "addv", "parameters": {"amount": 3, "Mix": "50%"}})" + close,
         "the settings file look.json at filters[0].parameters.Mix: is no parameter and belongs beside"},
        {open + R"({"filter": "echo", "parameters": {"to": "2s"}})" + close,
         "the settings file look.json at filters[0].parameters.to: is no parameter and belongs beside"},
        {open + R"({"filter": "addv", "parameter": {}})" + close,
         "the settings file look.json at filters[0].parameter: is not known here"},
    };
    for (const Case& c : cases) EXPECT_THAT(errorOf(c.text), StartsWith(c.message)) << c.text.substr(0, 200);
}

TEST(LevelsFile, HoldsTheRecordBehindItsMagic) {
    const std::string magic("L\0V\0", 4);
    std::string values(40, '\x11');
    EXPECT_EQ(parseLevelsFile("a.lvl", magic + values + "more"), std::vector<std::uint8_t>(40, 0x11));
    EXPECT_THROW(parseLevelsFile("a.lvl", magic + values.substr(1)), Error);
    EXPECT_THROW(parseLevelsFile("a.lvl", "LVL" + values), Error);
    EXPECT_THROW(parseLevelsFile("a.lvl", ""), Error);
}

TEST(SettingsBytes, ReadHexadecimalDigits) {
    EXPECT_THAT(readSettingsBytes("hex:00 ff 1A"), ElementsAre(0, 255, 0x1A));
    EXPECT_THAT(readSettingsBytes("hex:"), ElementsAre());
    for (const char* text : {"hex:0", "hex:0g", "/no/such/file"})
        EXPECT_THROW(readSettingsBytes(text), Error) << text;
}

}  // namespace
}  // namespace vireo
