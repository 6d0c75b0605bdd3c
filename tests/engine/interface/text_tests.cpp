// SPDX-License-Identifier: MIT
// What texts and settings files mean, and what is said of those that mean nothing.
#include "tests/engine/interface/interface_support.h"
#include "tests/support/golden_file.h"

#include <algorithm>
#include <numeric>
#include <optional>

namespace vireo::test {
namespace {

using testing::StartsWith;

/// The chain that a text means; then the first value that it gives and, from each frame on where it changes,
/// the next ones, and the frame at which the first filter begins or ends. Or why it is refused. A text that
/// begins with a bracket is a settings file.
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
        return outcome.str();
    }
    outcome << textOf(chain);
    for (const VireoSpelling spelling : {VireoSpellingFull, VireoSpellingCompact})
        EXPECT_EQ(textOf(newChain(textOf(chain, spelling))), textOf(chain));
    const std::size_t colon = text.find(':'), equals = text.find('=', colon);
    if (!isFile && equals != std::string::npos) {
        const std::int32_t parameter = parameterOf(chain, text.substr(colon + 1, equals - colon - 1));
        std::optional<std::int64_t> last;
        for (const std::int64_t frame : {0, 1, 2, 4, 6, 9, 10, 15, 25, 49, 50, 51, 100, 150, 900}) {
            if (parameter == VireoFrom || parameter == VireoTo) break;
            const std::int64_t value = valueAt(chain, parameter, frame);
            if (value != last) outcome << " | " << (last ? std::to_string(frame) + ": " : "") << value;
            last = value;
        }
    }
    const auto works = [&](std::int64_t frame) {
        std::int32_t covers = -1;
        const VireoTime time = moment(frame);
        const VireoStatus due = vireoChainLength(chain.get()) > 0 ? VireoDone : VireoUsage;
        EXPECT_EQ(vireoChainCovers(chain.get(), 0, &time, &covers), due);
        return covers;
    };
    std::vector<std::int64_t> frames(200'000);
    std::iota(frames.begin(), frames.end(), 0);
    const auto change = std::ranges::partition_point(frames, [&](auto at) { return works(at) == works(0); });
    if (change != frames.end()) outcome << (works(0) == 1 ? " | ends at " : " | begins at ") << *change;
    std::string unchanged;
    for (const std::int64_t frame : {0, 1, 2, 25}) {
        std::int32_t isIdentity = -1;
        const VireoTime time = moment(frame);
        EXPECT_EQ(vireoChainIsIdentity(chain.get(), &time, &isIdentity), VireoDone);
        if (isIdentity == 1) unchanged += ' ' + std::to_string(frame);
    }
    if (!unchanged.empty()) outcome << " | nothing changes at" << unchanged;
    return outcome.str();
}

TEST(InterfaceTexts, MeanWhatTheyMeant) {
    GoldenLines outcomes = goldenLines(VIREO_TEXTS);
    EXPECT_GT(outcomes.size(), 100U);
    for (auto& [text, outcome] : outcomes) outcome = outcomeOf(text);
    expectGolden(
        VIREO_TEXTS,
        "# SPDX-License-Identifier: MIT\n"
        "# What a text means to the C interface: the chain, its first value and, where that changes, frames"
        " with the next,\n"
        "# and where it begins or ends; or a status, a place, the filter, parameter and value that it is"
        " about, and a\n"
        "# sentence. To add a text, add a line and renew the file.\n",
        outcomes);
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
    EXPECT_EQ(vireoChainAddLevels(chain.get(), "L\0V\0abc", 7, nullptr), VireoBadSettings);
    EXPECT_EQ(sentence(), "settings ends after 3 of the 40 bytes of Levels settings");
    EXPECT_EQ(vireoChainAddLevels(chain.get(), "LxV", 3, "a.lvl"), VireoBadSettings);
    EXPECT_THAT(sentence(), StartsWith("a.lvl is no Levels file"));
    EXPECT_EQ(vireoChainAddFile(chain.get(), "no such file.json"), VireoFailed);
    EXPECT_EQ(sentence(), "cannot read no such file.json");
    EXPECT_EQ(vireoChainAddPreset(chain.get(), "f"), VireoUnknownPreset);
    EXPECT_EQ(sentence(), "the preset \"f\" may be faded or film-print");
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
