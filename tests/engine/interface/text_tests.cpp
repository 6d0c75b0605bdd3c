// SPDX-License-Identifier: MIT
// What texts and settings files mean, and what is said of those that mean nothing.
#include "tests/engine/interface/interface_support.h"

#include <cstring>

namespace vireo::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

/// A filter's value that was told as this, at a frame of 25 a second.
struct Meaning {
    const char* text;
    std::int64_t frame, value;
};

void expectMeanings(const std::string& parameter, const std::string& name, std::span<const Meaning> cases) {
    for (const Meaning& c : cases) {
        const ChainHandle chain = newChain(parameter + '=' + c.text);
        EXPECT_EQ(valueAt(chain, parameterOf(chain, name), c.frame), c.value) << parameter << '=' << c.text;
    }
}

TEST(InterfaceTexts, AreNumbersTruthsAndColors) {
    expectMeanings(" colorbal : RED ", "Red",
                   {{{"+7", 0, 7},
                     {" 510 ", 0, 510},
                     {"0%", 0, 0},
                     {"100%", 0, 255},
                     {"200 %", 0, 510},
                     {"10%", 0, 26},  // 25.5
                     {"9.9 %", 0, 25}}});
    expectMeanings("Color Replace:solid", "Solid Colors",
                   {{{"on", 0, 1}, {"True", 0, 1}, {"YES", 0, 1}, {"1", 0, 1}}});
    expectMeanings("Lens Distortion:fill alpha", "Fill Alpha",
                   {{{"Off", 0, 0}, {"false", 0, 0}, {"no", 0, 0}, {"0", 0, 0}}});
    expectMeanings("Color Pass:color", "Color",
                   {{{"#0A14ff", 0, 0x0A14FF},
                     {"rgb(10,20,255)", 0, 0x0A14FF},
                     {"RGB ( 10, 20 ,255)", 0, 0x0A14FF},
                     {"RebeccaPurple", 0, 0x663399},
                     {"aliceblue", 0, 0xF0F8FF},
                     {"yellowgreen", 0, 0x9ACD32},
                     {"#0000ff@0f..rgb(255,10,0)@2f", 1, 0x800580}}});
    EXPECT_THAT(bytesOf(newChain("Color Replace: sim=7,target=rgb( 1, 2 ,3), so = on")),
                ElementsAre(7, 0, 1, 1, 2, 3, 0, 0, 0, 255, 0, 0));
    EXPECT_THAT(bytesOf(newChain("Horizontal Hold:offset=-2")), ElementsAre(254, 255, 255, 255, 0, 0, 0, 0));
}

TEST(InterfaceTexts, AreKeyFrames) {
    expectMeanings("Lens Distortion:curv", "Curvature",
                   {{{"0@0s..100@4s..50@8s", 0, 0},
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
                     {"42@3s", 9, 42}}});
    expectMeanings("colorbal:red", "Red", {{{"50%@0f..100%@10f", 4, 179}}});
    // Frames of no constant rate stand where their times say.
    std::int64_t value = 0;
    VireoTime late = moment(3);
    late.seconds = 7.5;
    ASSERT_EQ(vireoChainValue(newChain("Solarize:threshold=0@0s..100@10s").get(), 0, 0, &late, &value),
              VireoDone);
    EXPECT_EQ(value, 75);
    // Seconds and frames may turn out to be in no order, at one rate and not at another.
    const ChainHandle mixed = newChain("Solarize:threshold=1@1s..2@20f");
    VireoTime now = moment(0);
    EXPECT_EQ(vireoChainValue(mixed.get(), 0, 0, &now, &value), VireoBadValue);
    EXPECT_EQ(sentence(), "key frames must follow each other in time, but 20f does not come after 1s");
    now.rate = 10;
    EXPECT_EQ(vireoChainValue(mixed.get(), 0, 0, &now, &value), VireoDone);
}

TEST(InterfaceTexts, AreTimes) {
    for (const Meaning& c : std::initializer_list<Meaning>{{"5s", 125, 0},
                                                           {"2.5", 63, 0},
                                                           {" 0 ", 0, 0},
                                                           {"1:02:03.5", 93088, 0},
                                                           {"2:03", 3075, 0},
                                                           {"0.25 s", 7, 0},
                                                           {"100f", 100, 0}}) {
        const ChainHandle chain = newChain(std::string("Solarize:to=100000f,from=") + c.text);
        for (const std::int64_t frame : {c.frame - 1, c.frame, std::int64_t{99999}, std::int64_t{100000}}) {
            if (frame < 0) continue;
            std::int32_t covers = -1;
            const VireoTime time = moment(frame);
            EXPECT_EQ(vireoChainCovers(chain.get(), 0, &time, &covers), VireoDone);
            EXPECT_EQ(covers, frame >= c.frame && frame < 100000 ? 1 : 0) << c.text << ", frame " << frame;
        }
    }
}

TEST(InterfaceErrors, OfTextsTellTheSentenceThePlaceAndWhatItIsAbout) {
    struct Case {
        const char* text;
        VireoStatus status;
        const char* begin;
        std::int64_t offset;
        const char *filter, *parameter, *value;
    };
    const Case cases[] = {
        {"Solarize; Gama:gamma=2", VireoUnknownFilter, "there is no filter \"Gama\"; the nearest are Gamma",
         10, "Gama", "", ""},
        {"Solarize\n  color", VireoUnknownFilter,
         "the filter \"color\" may be Color Balance (RGB), Color Pass or ", 11, "color", "", ""},
        {"Solarize:treshold=2", VireoUnknownParameter,
         "Solarize has no parameter \"treshold\"; the nearest are Threshold", 9, "Solarize", "treshold", ""},
        {"Levels:gamma=50", VireoUnknownParameter, "Levels has no parameter \"gamma\"", 7, "Levels", "gamma",
         ""},
        {"Black & White:x=2", VireoUnknownParameter, "Black & White has no parameters, only from", 14,
         "Black & White", "x", ""},
        {"Solarize:fro=1s", VireoUnknownParameter, "Solarize has no parameter \"fro\"", 9, "Solarize", "fro",
         ""},
        {"Solarize: threshold = 256", VireoBadValue,
         "Threshold of Solarize takes whole numbers from 0 to 254, not \"256\"", 22, "Solarize", "Threshold",
         "256"},
        {"Solarize:threshold=101%", VireoBadValue, "Threshold of Solarize goes from 0% to 100%, not \"101%\"",
         19, "Solarize", "Threshold", "101%"},
        {"Lens Distortion:curv=2%", VireoBadValue,
         "Curvature of Lens Distortion takes no per cent, only whole numbers from -100 to 100", 21,
         "Lens Distortion", "Curvature", "2%"},
        {"Color Pass:rev=maybe", VireoBadValue, "Reverse of Color Pass is a check box and takes on or off",
         15, "Color Pass", "Reverse", "maybe"},
        {"Color Pass:rev=1@0f..0@5f", VireoBadValue, "Reverse of Color Pass is a check box", 15, "Color Pass",
         "Reverse", "1@0f..0@5f"},
        {"Solarize:threshold=0@0s..9@5x", VireoBadValue, "Threshold of Solarize has a key frame at \"5x\"",
         27, "Solarize", "Threshold", "0@0s..9@5x"},
        {"Solarize:threshold=0@5s..9", VireoBadValue,
         "Threshold of Solarize has the key frame \"9\", which names no time", 25, "Solarize", "Threshold",
         "0@5s..9"},
        {"Solarize:threshold=0@5s..300@9s", VireoBadValue, "Threshold of Solarize takes whole numbers", 25,
         "Solarize", "Threshold", "0@5s..300@9s"},
        {"Solarize:threshold=0@5s..9@5s", VireoBadValue,
         "key frames must follow each other in time, but 5s does not come after 5s", 19, "Solarize",
         "Threshold", "0@5s..9@5s"},
        {"Solarize:threshold=0@5f..9@4f", VireoBadValue, "key frames must follow each other in time, but 4f",
         19, "Solarize", "Threshold", "0@5f..9@4f"},
        {"Solarize:mix=101", VireoBadValue, "mix of Solarize takes whole per cents from 0 to 100", 13,
         "Solarize", "mix", "101"},
        {"Solarize:from=soon", VireoBadValue, "from of Solarize takes a time like", 14, "Solarize", "from",
         "soon"},
        {"Solarize:threshold=", VireoBadValue, "Threshold of Solarize takes whole numbers", 19, "Solarize",
         "Threshold", ""},
        {"Solarize:threshold", VireoBadText,
         "\"threshold\" in the filter \"Solarize:threshold\" is not of the form", 9, "Solarize", "",
         "threshold"},
        {"Solarize:threshold=1,,mix=2", VireoBadText, "\"\" in the filter", 21, "Solarize", "", ""},
        {"Solarize:mix=1,mix=2", VireoBadText, "mix of Solarize is given twice", 15, "Solarize", "mix", "2"},
        {"Solarize:threshold=1,thresh=2", VireoBadText, "Threshold of Solarize is given twice", 21,
         "Solarize", "Threshold", "2"},
    };
    const ChainHandle chain = newChain("Levels:(rgb) gamma=130; Ghosting");
    const std::string before = textOf(chain);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(vireoChainAddText(chain.get(), c.text), c.status);
        const VireoError& error = *vireoLastError();
        EXPECT_EQ(error.status, c.status);
        EXPECT_THAT(error.sentence, StartsWith(c.begin));
        EXPECT_EQ(error.offset, c.offset);
        EXPECT_STREQ(error.filter, c.filter);
        EXPECT_STREQ(error.parameter, c.parameter);
        EXPECT_STREQ(error.value, c.value);
        EXPECT_EQ(textOf(chain), before);
    }
    // The same of one value.
    EXPECT_EQ(vireoChainSet(chain.get(), 0, 4, "10..20"), VireoBadValue);
    EXPECT_EQ(vireoLastError()->offset, 0);
    EXPECT_EQ(vireoChainSetValue(chain.get(), 0, 4, 1001), VireoBadValue);
    EXPECT_THAT(sentence(), testing::HasSubstr("from 0 to 1000, not \"1001\""));
    EXPECT_EQ(textOf(chain), before);
}

TEST(InterfaceErrors, OfValuesComeForEachThatIsNone) {
    const std::pair<const char*, std::vector<const char*>> cases[] = {
        {"Lens Distortion:curvature",
         {"101", "-101", "1.5", "", "12x", "0x10", "99999999999999999999", "--1"}},
        {"Color Pass:color",
         {"#12345", "#12345g", "rgb(1,2)", "rgb(1,2,256)", "rgb(1,2,3,4)", "rgb(1,2,3", "blurple", "5"}},
        {"Solarize:to",
         {"", "s", "f", "-1s", "1.5f", "-3f", "1:60", "1:60:00", "1:2:3:4", "1e3", "5 m", "x", "1:+2", ":5",
          "nan", "99999999999999999999f"}},
    };
    for (const auto& [parameter, values] : cases) {
        for (const char* value : values) {
            EXPECT_EQ(vireoChainAddText(newChain().get(), (std::string(parameter) + '=' + value).c_str()),
                      VireoBadValue)
                << parameter << '=' << value;
            EXPECT_THAT(sentence(), testing::EndsWith(std::string(", not \"") + value + '"'));
        }
    }
}

TEST(InterfaceSettings, HoldAChainWithItsOrderAndItsWords) {
    const std::string text = R"({
  "vireo": 1,
  "filters": [
    {
      "filter": "Color Replace",
      "parameters": {
        "Target Color": "#ff0000",
        "Similarity": 64,
        "Solid Colors": false,
        "Replace Color": "#000000@0s..#ffffff@5s"
      },
      "mix": "50%"
    },
    {
      "filter": "Ghosting",
      "from": "2.5",
      "to": "120f"
    },
    {
      "filter": "Solarize"
    }
  ]
}
)";
    const ChainHandle chain = newChain(
        "color rep:target=red,simil=50%,solid=no,replace=black@0s..white@5s,mix=50; "
        "ghost:from=2.5,to=120f; Solarize");
    EXPECT_EQ(settingsOf(chain), text);
    const ChainHandle loaded = newChain(), typed = newChain();
    ASSERT_EQ(vireoChainAddSettings(loaded.get(), text.data(), text.size(), nullptr), VireoDone);
    EXPECT_EQ(textOf(loaded), textOf(chain));
    EXPECT_EQ(bytesOf(loaded), bytesOf(chain));
    const char asTyped[] = R"({"vireo": 1, "description": "Grey.", "filters": [{"filter": "colorrep",
        "mix": 25, "parameters": {"simil": "0%", "target": "lime", "SOLID": 1}}]})";
    ASSERT_EQ(vireoChainAddSettings(typed.get(), asTyped, std::strlen(asTyped), nullptr), VireoDone);
    EXPECT_EQ(textOf(typed), "Color Replace:Similarity=0,Target Color=#00ff00,Solid Colors=true,mix=25%");
}

TEST(InterfaceErrors, OfSettingsNameTheFileAndThePlace) {
    const std::string open = R"({"vireo": 1, "filters": [)", close = "]}";
    const std::pair<std::string, const char*> cases[] = {
        {"{\n  \"vireo\": 1,\n  oops", ": is no valid JSON at line 3, column 3"},
        {"", ": is no valid JSON at line 1, column 1"},
        {"[]", ": must be an object"},
        {R"({"filters": []})", ": \"vireo\" is missing"},
        {R"({"vireo": 2})", " at vireo: is version 2, but only version 1 is known"},
        {R"({"vireo": "1"})", " at vireo: is version \"1\""},
        {R"({"vireo": )" + std::string(200000, '[') + std::string(200000, ']') + '}',
         " at vireo: is no number, but only version 1 is known"},
        {R"({"vireo": 1e999})", ": holds a number that is too large"},
        {R"({"vireo": 1, "filters": []})", " at filters: must be a list"},
        {R"({"vireo": 1, "filter": []})", " at filter: is not known here"},
        {R"({"vireo": 1, "description": 3, "filters": []})", " at description: must be a text"},
        {open + "3" + close, " at filters[0]: must be an object"},
        {open + R"({"filter": "ghost"}, {"filter": "nothing"})" + close,
         " at filters[1].filter: there is no filter \"nothing\""},
        {open + R"({"filter": "sol", "parameters": {"thr": 300}})" + close,
         " at filters[0].parameters.thr: Threshold of Solarize takes whole numbers from 0"},
        {open + R"({"filter": "sol", "parameters": {"thr": 1.5}})" + close,
         " at filters[0].parameters.thr: "},
        {open + R"({"filter": "sol", "parameters": {"thr": []}})" + close,
         " at filters[0].parameters.thr: must be a number"},
        {open + R"({"filter": "sol", "parameters": {"thr": 3, "Mix": "50%"}})" + close,
         " at filters[0].parameters.Mix: is no parameter and belongs beside"},
        {open + R"({"filter": "ghost", "parameters": {"to": "2s"}})" + close,
         " at filters[0].parameters.to: is no parameter and belongs beside"},
        {open + R"({"filter": "sol", "parameter": {}})" + close,
         " at filters[0].parameter: is not known here"},
    };
    const ChainHandle chain = newChain("Solarize");
    for (const auto& [text, said] : cases) {
        for (const char* name : {"look.json", static_cast<const char*>(nullptr)}) {
            EXPECT_EQ(vireoChainAddSettings(chain.get(), text.data(), text.size(), name), VireoBadSettings);
            EXPECT_THAT(sentence(), StartsWith(std::string("the settings file ") +
                                               (name != nullptr ? name : "settings") + said))
                << text.substr(0, 200);
        }
    }
    EXPECT_EQ(vireoChainAddLevels(chain.get(), "L\0V\0abc", 7, nullptr), VireoBadSettings);
    EXPECT_EQ(sentence(), "settings ends after 3 of the 40 bytes of Levels settings");
    EXPECT_EQ(vireoChainAddLevels(chain.get(), "LxV", 3, "a.lvl"), VireoBadSettings);
    EXPECT_THAT(sentence(), StartsWith("a.lvl is no Levels file"));
    EXPECT_EQ(vireoChainAddFile(chain.get(), "no such file.json"), VireoFailed);
    EXPECT_EQ(sentence(), "cannot read no such file.json");
    EXPECT_EQ(vireoChainAddPreset(chain.get(), "no such preset"), VireoUnknownPreset);
    EXPECT_THAT(sentence(), StartsWith("there is no preset \"no such preset\""));
    EXPECT_EQ(textOf(chain), "Solarize");
}

}  // namespace
}  // namespace vireo::test
