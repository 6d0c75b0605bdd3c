// SPDX-License-Identifier: MIT
// What texts and settings files mean, and what is said of those that mean nothing.
#include "tests/engine/interface/interface_support.h"
#include "tests/support/golden_file.h"

#include <cstring>

namespace vireo::test {
namespace {

using testing::ElementsAre;
using testing::StartsWith;

/// What a text means: the first parameter that it names, from each frame on where it changes, or why it is
/// refused. One that begins with a bracket is a settings file.
std::string outcomeOf(const std::string& text) {
    const ChainHandle chain = newChain();
    const bool isFile = text.starts_with('{') || text.starts_with('[');
    std::ostringstream outcome;
    if ((isFile ? vireoChainAddSettings(chain.get(), text.data(), text.size(), nullptr)
                : vireoChainAddText(chain.get(), text.c_str())) != VireoDone) {
        const VireoError& error = *vireoLastError();
        outcome << error.status << " at " << error.offset;
        for (const char* about : {error.filter, error.parameter, error.value})
            outcome << " [" << about << ']';
        outcome << ' ' << error.sentence;
        EXPECT_EQ(vireoChainLength(chain.get()), 0U) << "nothing is added";
    } else if (isFile) {
        outcome << textOf(chain);
    } else {
        const std::size_t name = text.find(':') + 1;
        const std::int32_t parameter = parameterOf(chain, text.substr(name, text.find('=') - name));
        std::optional<std::int64_t> last;
        for (const std::int64_t frame : {0, 1, 2, 4, 6, 9, 10, 15, 25, 49, 50, 51, 100, 150, 900}) {
            const std::int64_t value = valueAt(chain, parameter, frame);
            if (value == last) continue;
            outcome << (last ? ", from " + std::to_string(frame) + " on " : "") << value;
            last = value;
        }
    }
    return outcome.str();
}

TEST(InterfaceTexts, MeanWhatTheyMeant) {
    GoldenLines outcomes = goldenLines(VIREO_TEXTS);
    EXPECT_GT(outcomes.size(), 100U);
    for (auto& [text, outcome] : outcomes) outcome = outcomeOf(text);
    expectGolden(
        VIREO_TEXTS,
        "# SPDX-License-Identifier: MIT\n"
        "# What a text means to the C interface: a value and, where it changes, those of later frames,"
        " or a status, a place,\n"
        "# the filter, parameter and value that it is about, and a sentence. To add a text, add a line"
        " and renew the file.\n",
        outcomes);
}

TEST(InterfaceTexts, AreTheSettingsHandlesBytes) {
    EXPECT_THAT(bytesOf(newChain("Color Replace: sim=7,target=rgb( 1, 2 ,3), so = on")),
                ElementsAre(7, 0, 1, 1, 2, 3, 0, 0, 0, 255, 0, 0));
    EXPECT_THAT(bytesOf(newChain("Horizontal Hold:offset=-2")), ElementsAre(254, 255, 255, 255, 0, 0, 0, 0));
}

TEST(InterfaceTexts, HangOnTheClipsTimesWhereTheySaySo) {
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
    for (const auto& [text, from] :
         std::initializer_list<std::pair<const char*, std::int64_t>>{{"5s", 125},
                                                                     {"2.5", 63},
                                                                     {" 0 ", 0},
                                                                     {"1:02:03.5", 93088},
                                                                     {"2:03", 3075},
                                                                     {"0.25 s", 7},
                                                                     {"100f", 100}}) {
        const ChainHandle chain = newChain(std::string("Solarize:to=100000f,from=") + text);
        for (const std::int64_t frame : {from - 1, from, std::int64_t{99999}, std::int64_t{100000}}) {
            std::int32_t covers = -1;
            const VireoTime time = moment(std::max<std::int64_t>(frame, 0));
            EXPECT_EQ(vireoChainCovers(chain.get(), 0, &time, &covers), VireoDone);
            EXPECT_EQ(covers, time.frame >= from && frame < 100000 ? 1 : 0) << text << ", frame " << frame;
        }
    }
}

TEST(InterfaceErrors, NameTheValueAndTheFile) {
    const ChainHandle chain = newChain("Levels:(rgb) gamma=130; Ghosting");
    EXPECT_EQ(vireoChainSet(chain.get(), 0, 4, "10..20"), VireoBadValue);
    EXPECT_EQ(vireoLastError()->offset, 0);
    EXPECT_EQ(vireoChainSetValue(chain.get(), 0, 4, 1001), VireoBadValue);
    EXPECT_THAT(sentence(), testing::HasSubstr("from 0 to 1000, not \"1001\""));
    const auto ofSettings = [&](const std::string& text) {
        EXPECT_EQ(vireoChainAddSettings(chain.get(), text.data(), text.size(), "a.json"), VireoBadSettings);
        return sentence();
    };
    EXPECT_THAT(ofSettings("{\n  \"vireo\": 1,\n  oops"),
                StartsWith("the settings file a.json: is no valid JSON at line 3, column 3"));
    EXPECT_THAT(ofSettings(R"({"vireo": )" + std::string(200000, '[') + std::string(200000, ']') + '}'),
                StartsWith("the settings file a.json at vireo: is no number, but only version 1 is known"));
    EXPECT_EQ(vireoChainAddLevels(chain.get(), "L\0V\0abc", 7, nullptr), VireoBadSettings);
    EXPECT_EQ(sentence(), "settings ends after 3 of the 40 bytes of Levels settings");
    EXPECT_EQ(vireoChainAddLevels(chain.get(), "LxV", 3, "a.lvl"), VireoBadSettings);
    EXPECT_THAT(sentence(), StartsWith("a.lvl is no Levels file"));
    EXPECT_EQ(vireoChainAddFile(chain.get(), "no such file.json"), VireoFailed);
    EXPECT_EQ(sentence(), "cannot read no such file.json");
    EXPECT_EQ(vireoChainAddPreset(chain.get(), "no such preset"), VireoUnknownPreset);
    EXPECT_THAT(sentence(), StartsWith("there is no preset \"no such preset\""));
    EXPECT_EQ(textOf(chain), "Levels:(RGB) Gamma=130; Ghosting") << "nothing was added";
}

TEST(InterfaceSettings, HoldAChainWithItsOrderAndItsWords) {
    const ChainHandle chain = newChain(
        "color rep:target=red,simil=50%,solid=no,replace=black@0s..white@5s,mix=50; "
        "ghost:from=2.5,to=120f; Solarize");
    const ChainHandle loaded = newChain();
    ASSERT_EQ(vireoChainAddFile(loaded.get(), VIREO_SETTINGS), VireoDone) << sentence();
    EXPECT_EQ(settingsOf(chain), settingsOf(loaded)) << "which come back as they are in the file";
    EXPECT_EQ(textOf(loaded), textOf(chain));
    EXPECT_EQ(bytesOf(loaded), bytesOf(chain));
}

}  // namespace
}  // namespace vireo::test
