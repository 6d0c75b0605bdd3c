// SPDX-License-Identifier: MIT
// Filters, texts and values as callers see them.
#include "tests/engine/interface/interface_support.h"

#include <cstring>
#include <set>

static bool operator==(const VireoKey& a, const VireoKey& b) {
    return a.frame == b.frame && a.seconds == b.seconds && a.value == b.value && a.transition == b.transition;
}

namespace vireo::test {
namespace {

using testing::ElementsAre;

std::string valueText(const ChainHandle& chain, std::int32_t parameter, std::uint32_t position = 0) {
    return textFrom([&](char** text) { return vireoChainGet(chain.get(), position, parameter, text); });
}

bool isSet(const ChainHandle& chain, std::int32_t parameter) {
    std::int32_t set = -1;
    EXPECT_EQ(vireoChainIsSet(chain.get(), 0, parameter, &set), VireoDone) << sentence();
    return set == 1;
}

TEST(InterfaceCatalogue, DescribesEveryFilterInEveryLanguage) {
    std::set<std::string> germanNames;
    VireoEngine* german = nullptr;
    const VireoOpenOptions options{sizeof options, nullptr, "de"};
    ASSERT_EQ(vireoOpen(&options, &german), VireoDone) << sentence();
    ASSERT_EQ(vireoFilterCount(engine()), 22U);
    for (std::uint32_t i = 0; i < vireoFilterCount(engine()); ++i) {
        VireoFilter filter{.structSize = sizeof filter}, other{.structSize = sizeof other};
        ASSERT_EQ(vireoDescribeFilter(engine(), i, &filter), VireoDone);
        ASSERT_EQ(vireoDescribeFilter(german, i, &other), VireoDone);
        EXPECT_STREQ(filter.name, filter.englishName);
        EXPECT_STREQ(filter.category, filter.englishCategory);
        EXPECT_STREQ(filter.name, other.englishName);
        germanNames.insert(other.name);
        for (const std::string& name : {std::string(filter.name), std::string(filter.key),
                                        std::string(filter.matchName), std::to_string(filter.id)}) {
            std::uint32_t found = UINT32_MAX;
            EXPECT_EQ(vireoFindFilter(engine(), name.c_str(), &found), VireoDone) << name;
            EXPECT_EQ(found, i) << name;
        }
        const ChainHandle chain = newChain();
        ASSERT_EQ(vireoChainAddFilter(chain.get(), i), VireoDone);
        std::size_t bytes = 0;
        for (std::uint32_t p = 0; p < filter.parameterCount; ++p) {
            VireoParameter parameter{.structSize = sizeof parameter};
            ASSERT_EQ(vireoDescribeParameter(engine(), i, p, &parameter), VireoDone);
            EXPECT_EQ(valueAt(chain, static_cast<std::int32_t>(p), 0), parameter.initial) << parameter.name;
            EXPECT_STREQ(parameter.name, parameter.englishName);
            if (parameter.kind == VireoNumber) {
                EXPECT_TRUE(parameter.minimum <= static_cast<double>(parameter.initial) &&
                            static_cast<double>(parameter.initial) <= parameter.maximum)
                    << parameter.name;
            }
            for (std::uint32_t choice = 0; choice < parameter.choiceCount; ++choice) {
                const char* word = nullptr;
                EXPECT_EQ(vireoDescribeChoice(engine(), i, p, choice, &word), VireoDone);
                EXPECT_STRNE(word, "");
            }
            bytes += parameter.size;
        }
        EXPECT_LE(bytes, bytesOf(chain).size());
    }
    EXPECT_EQ(germanNames.size(), 22U);
    for (const char* language : {"en", "fr", "ja", "es", "it", "ko", "de"}) {
        ASSERT_EQ(vireoSetLanguage(german, language), VireoDone);
        for (std::uint32_t i = 0; i < 22; ++i) {
            VireoFilter filter{.structSize = sizeof filter};
            std::uint32_t found = UINT32_MAX;
            ASSERT_EQ(vireoDescribeFilter(german, i, &filter), VireoDone);
            EXPECT_EQ(vireoFindFilter(german, filter.name, &found), VireoDone) << filter.name;
            EXPECT_EQ(found, i) << filter.name;
        }
    }
    // Chains outlive their engine, and keep its language.
    VireoChain* chain = nullptr;
    ASSERT_EQ(vireoChainNew(german, &chain), VireoDone);
    ASSERT_EQ(vireoSetLanguage(german, "fr"), VireoDone);
    VireoFilter french{.structSize = sizeof french};
    ASSERT_EQ(vireoDescribeFilter(german, 5, &french), VireoDone);
    EXPECT_FALSE(germanNames.contains(french.name)) << french.name;
    EXPECT_EQ(textFrom([&](char** text) { return vireoTranslate(german, "$$$/No/Such=Text", text); }),
              "Text");
    vireoClose(german);
    EXPECT_EQ(vireoChainAddText(chain, germanNames.begin()->c_str()), VireoDone) << sentence();
    vireoChainClose(chain);
}

TEST(InterfaceCatalogue, ListsPresetsThatAChainTakes) {
    std::uint32_t count = 0;
    ASSERT_EQ(vireoPresetCount(engine(), &count), VireoDone);
    ASSERT_GT(count, 5U);
    for (std::uint32_t i = 0; i < count; ++i) {
        VireoPreset preset{.structSize = sizeof preset};
        ASSERT_EQ(vireoDescribePreset(engine(), i, &preset), VireoDone);
        const ChainHandle byName = newChain(), byFile = newChain();
        EXPECT_EQ(vireoChainAddPreset(byName.get(), preset.name), VireoDone) << sentence();
        EXPECT_EQ(vireoChainAddFile(byFile.get(), preset.file), VireoDone) << sentence();
        EXPECT_STRNE(preset.description, "");
        EXPECT_EQ(settingsOf(byName), settingsOf(byFile));
        for (char* text : {preset.name, preset.description, preset.file}) vireoFree(text);
    }
}

TEST(InterfaceTexts, ReadAsTheChainInBothSpellings) {
    const char* const texts[] = {
        "",
        "Solarize",
        "Black & White:mix=50%; "
        "Solarize:Threshold=0@0s..254@5s..hold..100@8.25s..smooth..0@300f,from=1s,to=120f",
        "Color Replace:Target Color=#ff8000,Solid Colors=true; Color Balance (RGB):Red=128",
        "Color Pass:Color=#010203@0f..#ffffff@10f; Levels:(RGB) Gamma=130; Levels; "
        "Ghosting:mix=0%@0f..100%@9f",
    };
    for (const char* const text : texts) {
        const ChainHandle chain = newChain(text);
        EXPECT_EQ(textOf(chain), text);
        const std::string compact = textOf(chain, VireoSpellingCompact);
        EXPECT_EQ(compact.find_first_of(std::strstr(text, "; ") ? "&%" : " &%"), std::string::npos)
            << compact;
        EXPECT_EQ(textOf(newChain(compact)), text);
        EXPECT_EQ(textOf(copyOf(chain)), text);
        std::string joined;
        for (std::uint32_t i = 0; i < vireoChainLength(chain.get()); ++i) {
            joined += (i > 0 ? "; " : "") + textFrom([&](char** one) {
                          return vireoChainFilterText(chain.get(), i, VireoSpellingFull, one);
                      });
        }
        EXPECT_EQ(joined, text);
    }
    for (std::uint32_t filter = 0; filter < 22; ++filter) {
        const ChainHandle chain = newChain();
        ASSERT_EQ(vireoChainAddFilter(chain.get(), filter), VireoDone);
        setAllAtRandom(chain, 0, filter);
        for (const VireoSpelling spelling : {VireoSpellingFull, VireoSpellingCompact}) {
            EXPECT_EQ(bytesOf(newChain(textOf(chain, spelling))), bytesOf(chain)) << textOf(chain, spelling);
        }
    }
}

TEST(InterfaceTexts, AreMovedAndRemovedFilterByFilter) {
    const ChainHandle chain = newChain("Solarize\n\nGhosting;; Levels\r\nReplicate");
    EXPECT_EQ(vireoChainLength(chain.get()), 4U);
    EXPECT_EQ(vireoChainMove(chain.get(), 0, 2), VireoDone);
    EXPECT_EQ(textOf(chain), "Ghosting; Levels; Solarize; Replicate");
    EXPECT_EQ(vireoChainMove(chain.get(), 3, 0), VireoDone);
    EXPECT_EQ(vireoChainMove(chain.get(), 1, 1), VireoDone);
    EXPECT_EQ(textOf(chain), "Replicate; Ghosting; Levels; Solarize");
    EXPECT_EQ(vireoChainRemove(chain.get(), 1), VireoDone);
    EXPECT_EQ(textOf(chain), "Replicate; Levels; Solarize");
    std::uint32_t filter = 0, expected = 0;
    EXPECT_EQ(vireoChainFilter(chain.get(), 1, &filter), VireoDone);
    EXPECT_EQ(vireoFindFilter(engine(), "Levels", &expected), VireoDone);
    EXPECT_EQ(filter, expected);
}

TEST(InterfaceSettings, ComeBackByteForByteUntilSomethingChanges) {
    const std::string text =
        "{ \"filters\":[{\"parameters\":{\"threshold\" : \"50%\"},\"filter\":\"10049\"}],\n\"vireo\":1}";
    const ChainHandle chain = newChain();
    ASSERT_EQ(vireoChainAddSettings(chain.get(), text.data(), text.size(), nullptr), VireoDone) << sentence();
    EXPECT_EQ(settingsOf(chain), text);
    EXPECT_EQ(settingsOf(copyOf(chain)), text);
    // What changes nothing, or fails, is no change.
    EXPECT_EQ(vireoChainAddText(chain.get(), " ; "), VireoDone);
    EXPECT_EQ(vireoChainSetThreads(chain.get(), 2), VireoDone);
    EXPECT_EQ(vireoChainAddText(chain.get(), "nothing"), VireoUnknownFilter);
    EXPECT_EQ(vireoChainSet(chain.get(), 0, 0, "x"), VireoBadValue);
    EXPECT_EQ(vireoChainRemove(chain.get(), 1), VireoUsage);
    EXPECT_EQ(settingsOf(chain), text);

    EXPECT_EQ(vireoChainSet(chain.get(), 0, VireoFrom, "2s"), VireoDone);
    const ChainHandle same = newChain(textOf(chain));
    EXPECT_EQ(settingsOf(chain), settingsOf(same));
}

TEST(InterfaceValues, AreSetReadAndTakenAway) {
    const ChainHandle chain = newChain("Color Replace");
    const std::int32_t similarity = parameterOf(chain, "simil"), target = parameterOf(chain, "Target Color"),
                       solid = parameterOf(chain, "solid");
    EXPECT_EQ(parameterOf(chain, "FROM"), VireoFrom);
    EXPECT_EQ(parameterOf(chain, "to"), VireoTo);
    EXPECT_EQ(parameterOf(chain, "mix"), VireoMix);
    const std::string fresh = valueText(chain, similarity);
    struct Case {
        std::int32_t parameter;
        const char *given, *shown;
        std::int64_t value;
    };
    for (const Case& c :
         {Case{similarity, "20%", "25", 25}, Case{similarity, " 7 ", "7", 7},
          Case{target, "rgb(1,2,3)", "#010203", 0x010203}, Case{target, "red", "#ff0000", 0xFF0000},
          Case{solid, "yes", "true", 1}, Case{VireoMix, "30", "30%", 30}}) {
        EXPECT_EQ(vireoChainSet(chain.get(), 0, c.parameter, c.given), VireoDone) << sentence();
        EXPECT_EQ(valueText(chain, c.parameter), c.shown);
        EXPECT_EQ(valueAt(chain, c.parameter, 0), c.value);
        EXPECT_TRUE(isSet(chain, c.parameter));
        // The number is the same value.
        EXPECT_EQ(vireoChainUnset(chain.get(), 0, c.parameter), VireoDone);
        EXPECT_FALSE(isSet(chain, c.parameter));
        EXPECT_EQ(vireoChainSetValue(chain.get(), 0, c.parameter, c.value), VireoDone) << sentence();
        EXPECT_EQ(valueText(chain, c.parameter), c.shown);
    }
    EXPECT_EQ(vireoChainUnset(chain.get(), 0, similarity), VireoDone);
    EXPECT_EQ(valueText(chain, similarity), fresh);
    EXPECT_EQ(vireoChainSetValue(chain.get(), 0, target, 0x1000000), VireoBadValue);
    EXPECT_THAT(sentence(), testing::HasSubstr("\"16777216\""));
    EXPECT_EQ(vireoChainSetValue(chain.get(), 0, solid, 2), VireoBadValue);

    EXPECT_EQ(valueText(chain, VireoFrom), "");
    EXPECT_EQ(vireoChainSet(chain.get(), 0, VireoFrom, "2f"), VireoDone);
    EXPECT_EQ(valueText(chain, VireoFrom), "2f");
}

TEST(InterfaceValues, HaveKeyFrames) {
    const ChainHandle chain = newChain("Solarize; Color Pass");
    const VireoKey keys[] = {
        {-1, 0.04, 0, VireoSmooth}, {-1, 1.25, 200, VireoHold}, {50, 0, 100, VireoLinear}};
    ASSERT_EQ(vireoChainSetKeys(chain.get(), 0, 0, keys, 3), VireoDone) << sentence();
    EXPECT_EQ(valueText(chain, 0), "0@0.04s..smooth..200@1.25s..hold..100@50f");
    EXPECT_EQ(valueAt(chain, 0, 1), 0);
    EXPECT_EQ(valueAt(chain, 0, 49), 200);
    EXPECT_EQ(valueAt(chain, 0, 50), 100);
    std::uint32_t count = 0;
    VireoKey read[3]{};
    ASSERT_EQ(vireoChainKeys(chain.get(), 0, 0, read, 2, &count), VireoDone);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(read[2].value, 0) << "beyond the capacity";
    ASSERT_EQ(vireoChainKeys(chain.get(), 0, 0, read, 3, &count), VireoDone);
    EXPECT_THAT(read, ElementsAre(keys[0], keys[1], keys[2]));

    const VireoKey color[] = {{0, 0, 0x102030, VireoLinear}, {10, 0, 0xFF8040, VireoLinear}};
    const std::int32_t passed = parameterOf(chain, "Color", 1);
    ASSERT_EQ(vireoChainSetKeys(chain.get(), 1, passed, color, 2), VireoDone) << sentence();
    EXPECT_EQ(valueText(chain, passed, 1), "#102030@0f..#ff8040@10f");
    ASSERT_EQ(vireoChainKeys(chain.get(), 1, passed, read, 3, &count), VireoDone);
    EXPECT_EQ(read[1], color[1]);
    const VireoKey mix[] = {{0, 0, 0, VireoLinear}, {100, 0, 100, VireoLinear}};
    ASSERT_EQ(vireoChainSetKeys(chain.get(), 0, VireoMix, mix, 2), VireoDone);
    EXPECT_EQ(valueAt(chain, VireoMix, 30), 30);

    // One key is a constant that is told as a key, and what is no key has none.
    ASSERT_EQ(vireoChainSetKeys(chain.get(), 0, 0, keys, 1), VireoDone);
    EXPECT_EQ(valueText(chain, 0), "0@0.04s");
    ASSERT_EQ(vireoChainSetValue(chain.get(), 0, 0, 9), VireoDone);
    ASSERT_EQ(vireoChainKeys(chain.get(), 0, 0, nullptr, 0, &count), VireoDone);
    EXPECT_EQ(count, 0U);
    const VireoKey backwards[] = {{5, 0, 1, VireoLinear}, {4, 0, 1, VireoLinear}};
    EXPECT_EQ(vireoChainSetKeys(chain.get(), 0, 0, backwards, 2), VireoBadValue);
    const VireoKey tooHigh{0, 0, 256, VireoLinear};
    EXPECT_EQ(vireoChainSetKeys(chain.get(), 0, 0, &tooHigh, 1), VireoBadValue);
    EXPECT_EQ(valueText(chain, 0), "9");
}

TEST(InterfaceValues, KeepTheSecondsOfKeys) {
    const ChainHandle chain = newChain("Solarize");
    struct Case {
        double seconds;
        const char* text;
    };
    for (const Case& c : {Case{0, "1@0s"}, Case{4.9999999999, "1@5s"}, Case{1.0 / 3, "1@0.333333333s"},
                          Case{1e9, "1@1000000000s"}, Case{1e-12, "1@0s"}, Case{59.999, "1@59.999s"}}) {
        const VireoKey key{-1, c.seconds, 1, VireoLinear};
        ASSERT_EQ(vireoChainSetKeys(chain.get(), 0, 0, &key, 1), VireoDone) << sentence();
        EXPECT_EQ(valueText(chain, 0), c.text);
    }
    const VireoKey farFrame{INT64_MAX, 0, 1, VireoLinear};
    ASSERT_EQ(vireoChainSetKeys(chain.get(), 0, 0, &farFrame, 1), VireoDone) << sentence();
    EXPECT_EQ(textOf(newChain(textOf(chain))), textOf(chain));
}

TEST(InterfaceBytes, AreTheSettingsHandle) {
    const ChainHandle chain = newChain("Solarize:threshold=0@0f..200@10f; Black & White");
    EXPECT_EQ(bytesOf(chain, 0, 5), (std::vector<std::uint8_t>{100, 0}));
    EXPECT_EQ(bytesOf(chain, 1), std::vector<std::uint8_t>());
    const ChainHandle other = newChain("Color Replace:similarity=9; Color Pass");
    std::vector<std::uint8_t> bytes = bytesOf(other, 1);
    ASSERT_EQ(bytes.size(), 8U);  // one more than the parameters take
    bytes[3] = 1;
    bytes[6] = 0xEE;  // A colour's fourth byte means nothing.
    ASSERT_EQ(vireoChainSetBytes(other.get(), 1, bytes.data(), bytes.size()), VireoDone) << sentence();
    EXPECT_EQ(bytesOf(other, 1), bytes);
    std::int64_t color = 0;
    ASSERT_EQ(vireoChainValue(other.get(), 1, 2, nullptr, &color), VireoDone);
    EXPECT_EQ(color >> 16, 1);
    EXPECT_EQ(vireoChainSetBytes(other.get(), 1, bytes.data(), bytes.size() - 2), VireoUsage);
    EXPECT_EQ(bytesOf(other, 1), bytes);
    // The parameters' bytes are enough, what was assigned goes before them, and no text may say all of them.
    const ChainHandle both = newChain("Color Pass:reverse=on; Solarize");
    ASSERT_EQ(vireoChainSetBytes(both.get(), 0, "\5\0\0\1\2\3\0", 7), VireoDone) << sentence();
    EXPECT_EQ(textOf(both), "Color Pass:Reverse=true,Similarity=5,Color=#010203; Solarize");
    ASSERT_EQ(vireoChainSetBytes(both.get(), 1, "\377\0", 2), VireoDone) << sentence();
    char* text = nullptr;
    EXPECT_EQ(vireoChainText(both.get(), VireoSpellingFull, &text), VireoFailed);
    EXPECT_THAT(sentence(), testing::StartsWith("Threshold of Solarize goes from 0 to 254, so that the 255"));
}

TEST(InterfaceBytes, OfALevelsFileAreInTheTextToo) {
    std::string file("L\0V\0", 4);
    for (int channel = 0; channel < 4; ++channel) {
        for (const int value : {10 + channel, 200, 5, 250, 120}) {
            file += static_cast<char>(value);
            file += '\0';
        }
    }
    const ChainHandle chain = newChain();
    ASSERT_EQ(vireoChainAddLevels(chain.get(), file.data(), file.size(), nullptr), VireoDone) << sentence();
    void* content = nullptr;
    std::size_t length = 0;
    ASSERT_EQ(vireoChainLevels(chain.get(), 0, nullptr, &content, &length), VireoDone);
    EXPECT_EQ(std::string(static_cast<char*>(content), length), file);
    vireoFree(content);
    EXPECT_EQ(valueAt(chain, 0, 0), 10);
    for (const VireoSpelling spelling : {VireoSpellingFull, VireoSpellingCompact}) {
        EXPECT_EQ(bytesOf(newChain(textOf(chain, spelling))), bytesOf(chain)) << textOf(chain, spelling);
    }
    EXPECT_EQ(vireoChainLevels(newChain("Solarize").get(), 0, nullptr, &content, &length), VireoUsage);
}

}  // namespace
}  // namespace vireo::test
