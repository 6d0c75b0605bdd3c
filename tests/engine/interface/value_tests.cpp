// SPDX-License-Identifier: MIT
// Filters, texts and values as callers see them.
#include "tests/engine/interface/interface_support.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <set>

static bool operator==(const VireoKey& a, const VireoKey& b) {
    return a.frame == b.frame && a.seconds == b.seconds && a.value == b.value && a.transition == b.transition;
}

namespace vireo::test {
namespace {

std::string valueText(const ChainHandle& chain, std::int32_t parameter) {
    return textFrom([&](char** text) { return vireoChainGet(chain.get(), 0, parameter, text); });
}

VireoFilter described(const VireoEngine* by, std::uint32_t filter) {
    VireoFilter about{.structSize = sizeof about};
    EXPECT_EQ(vireoDescribeFilter(by, filter, &about), VireoDone);
    return about;
}

bool isSet(const ChainHandle& chain, std::int32_t parameter) {
    std::int32_t set = -1;
    EXPECT_EQ(vireoChainIsSet(chain.get(), 0, parameter, &set), VireoDone) << sentence();
    return set == 1;
}

TEST(InterfaceCatalogue, TellsWhatItIs) {
    using testing::StrEq;
    EXPECT_STRNE(vireoVersion(), "");
    EXPECT_EQ(std::string(vireoVersion()).find_first_not_of("0123456789."), std::string::npos);
    EXPECT_STRNE(vireoCommit(), "");
    EXPECT_THAT(vireoInstructionSet(), testing::AnyOf(StrEq("baseline"), StrEq("avx2"), StrEq("avx512")));
}

TEST(InterfaceCatalogue, DescribesEveryFilterInEveryLanguage) {
    VireoEngine* other = nullptr;
    const VireoOpenOptions options{sizeof options, nullptr, "de"};
    ASSERT_EQ(vireoOpen(&options, &other), VireoDone) << sentence();
    VireoChain* german = nullptr;
    ASSERT_EQ(vireoChainNew(other, &german), VireoDone);
    const std::string germanName = described(other, 5).name;
    for (const char* language : {"en", "de", "fr", "ja", "es", "it", "ko"}) {
        ASSERT_EQ(vireoSetLanguage(other, language), VireoDone);
        std::set<std::string> names;
        for (std::uint32_t i = 0; i < 22; ++i) {
            const VireoFilter english = described(engine(), i), translated = described(other, i);
            EXPECT_STREQ(english.name, translated.englishName);
            EXPECT_STREQ(english.category, translated.englishCategory);
            names.insert(translated.name);
            for (const std::string& name : {std::string(translated.name), std::string(english.key),
                                            std::string(english.matchName), std::to_string(english.id)}) {
                std::uint32_t found = UINT32_MAX;
                EXPECT_EQ(vireoFindFilter(other, name.c_str(), &found), VireoDone) << name;
                EXPECT_EQ(found, i) << name;
            }
        }
        EXPECT_EQ(names.size(), 22U);
        EXPECT_EQ(names.contains(germanName), std::string(language) == "de") << germanName;
    }
    EXPECT_EQ(textFrom([&](char** text) { return vireoTranslate(other, "$$$/No/Such=Text", text); }), "Text");
    // Chains outlive their engine, and keep its language.
    vireoClose(other);
    EXPECT_EQ(vireoChainAddText(german, germanName.c_str()), VireoDone) << sentence();
    vireoChainClose(german);
}

TEST(InterfaceCatalogue, DescribesWhatAFreshFilterHas) {
    ASSERT_EQ(vireoFilterCount(engine()), 22U);
    for (std::uint32_t i = 0; i < 22; ++i) {
        const ChainHandle chain = newChain();
        ASSERT_EQ(vireoChainAddFilter(chain.get(), i), VireoDone);
        std::size_t bytes = 0;
        for (std::uint32_t p = 0; p < described(engine(), i).parameterCount; ++p) {
            VireoParameter parameter{.structSize = sizeof parameter};
            ASSERT_EQ(vireoDescribeParameter(engine(), i, p, &parameter), VireoDone);
            EXPECT_EQ(valueAt(chain, static_cast<std::int32_t>(p), 0), parameter.initial) << parameter.name;
            EXPECT_STREQ(parameter.name, parameter.englishName);
            for (std::uint32_t choice = 0; choice < parameter.choiceCount; ++choice) {
                const char* word = nullptr;
                EXPECT_EQ(vireoDescribeChoice(engine(), i, p, choice, &word), VireoDone);
                EXPECT_STRNE(word, "");
            }
            bytes += parameter.size;
        }
        EXPECT_LE(bytes, bytesOf(chain).size());
    }
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
    const ChainHandle chain = newChain(), joined = newChain();
    for (std::uint32_t filter = 0; filter < 22; ++filter) {
        ASSERT_EQ(vireoChainAddFilter(chain.get(), filter), VireoDone);
        setAllAtRandom(chain, filter, filter);
        const std::string one = textFrom([&](char** text) {
            return vireoChainFilterText(chain.get(), filter, VireoSpellingCompact, text);
        });
        EXPECT_EQ(one.find_first_of(" &%"), std::string::npos) << "what addresses escape";
        EXPECT_EQ(vireoChainAddText(joined.get(), one.c_str()), VireoDone) << one;
        EXPECT_EQ(bytesOf(joined, filter), bytesOf(chain, filter)) << one;
    }
    const std::string text = textOf(chain);
    for (const ChainHandle& same : {newChain(text), newChain(textOf(chain, VireoSpellingCompact))})
        EXPECT_EQ(textOf(same), text);
    EXPECT_EQ(textOf(joined), text);
    EXPECT_EQ(textOf(copyOf(chain)), text);
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
}

TEST(InterfaceSettings, ComeBackByteForByteUntilSomethingChanges) {
    const std::string text =
        "{ \"filters\":[{\"parameters\":{\"threshold\" : \"50%\"},\"filter\":\"10049\"}],\n\"vireo\":1}";
    const ChainHandle chain = newChain();
    ASSERT_EQ(vireoChainAddSettings(chain.get(), text.data(), text.size(), nullptr), VireoDone) << sentence();
    // What changes nothing, or fails, is no change.
    EXPECT_EQ(vireoChainAddText(chain.get(), " ; "), VireoDone);
    EXPECT_EQ(vireoChainSetThreads(chain.get(), 2), VireoDone);
    EXPECT_EQ(vireoChainAddText(chain.get(), "nothing"), VireoUnknownFilter);
    EXPECT_EQ(vireoChainSet(chain.get(), 0, 0, "x"), VireoBadValue);
    EXPECT_EQ(vireoChainRemove(chain.get(), 1), VireoUsage);
    EXPECT_EQ(settingsOf(chain), text);
    EXPECT_EQ(settingsOf(copyOf(chain)), text);

    EXPECT_EQ(vireoChainSet(chain.get(), 0, VireoFrom, "2s"), VireoDone);
    EXPECT_EQ(settingsOf(chain), settingsOf(newChain(textOf(chain))));
}

TEST(InterfaceValues, AreSetReadAndTakenAway) {
    const ChainHandle chain = newChain("Color Replace");
    EXPECT_EQ(parameterOf(chain, "FROM"), VireoFrom);
    EXPECT_EQ(parameterOf(chain, "to"), VireoTo);
    struct Case {
        const char *name, *given, *shown;
        std::int64_t value;
    };
    for (const Case& c : {Case{"simil", "20%", "25", 25}, Case{"target", "rgb(1,2,3)", "#010203", 0x010203},
                          Case{"solid", "yes", "true", 1}, Case{"mix", "30", "30%", 30}}) {
        const std::int32_t parameter = parameterOf(chain, c.name);
        const std::string fresh = valueText(chain, parameter);
        EXPECT_EQ(vireoChainSet(chain.get(), 0, parameter, c.given), VireoDone) << sentence();
        EXPECT_EQ(valueText(chain, parameter), c.shown);
        EXPECT_EQ(valueAt(chain, parameter, 0), c.value);
        EXPECT_TRUE(isSet(chain, parameter));
        EXPECT_EQ(vireoChainUnset(chain.get(), 0, parameter), VireoDone);
        EXPECT_FALSE(isSet(chain, parameter));
        EXPECT_EQ(valueText(chain, parameter), fresh);
        EXPECT_EQ(vireoChainSetValue(chain.get(), 0, parameter, c.value), VireoDone) << sentence();
        EXPECT_EQ(valueText(chain, parameter), c.shown);
    }
    EXPECT_EQ(vireoChainSetValue(chain.get(), 0, parameterOf(chain, "target"), 0x1000000), VireoBadValue);
    EXPECT_THAT(sentence(), testing::HasSubstr("\"16777216\""));
    EXPECT_EQ(vireoChainSetValue(chain.get(), 0, parameterOf(chain, "solid"), 2), VireoBadValue);

    for (const std::int32_t word : {VireoFrom, VireoTo}) {
        EXPECT_EQ(valueText(chain, word), "");
        EXPECT_EQ(vireoChainSet(chain.get(), 0, word, "2.5s"), VireoDone) << sentence();
        EXPECT_EQ(valueText(chain, word), "2.5s");
        EXPECT_EQ(vireoChainUnset(chain.get(), 0, word), VireoDone);
        EXPECT_EQ(valueText(chain, word), "");
    }
}

TEST(InterfaceValues, HaveKeyFrames) {
    const char text[] =
        "Color Pass:Color=#102030@0.04s..smooth..#ff8040@1.25s..hold..#000001@50f,mix=0%@0f..100%@100f";
    const ChainHandle chain = newChain(text), same = newChain("Color Pass");
    const std::int32_t color = parameterOf(chain, "Color");
    VireoKey keys[3]{};
    std::uint32_t count = 0;
    ASSERT_EQ(vireoChainKeys(chain.get(), 0, color, keys, 2, &count), VireoDone);
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(keys[2], VireoKey()) << "beyond the capacity";
    ASSERT_EQ(vireoChainKeys(chain.get(), 0, color, keys, 3, &count), VireoDone);
    EXPECT_THAT(keys, testing::ElementsAre(VireoKey{-1, 0.04, 0x102030, VireoSmooth},
                                           VireoKey{-1, 1.25, 0xFF8040, VireoHold},
                                           VireoKey{50, 0, 0x000001, VireoLinear}));
    EXPECT_EQ(vireoChainSetKeys(same.get(), 0, color, keys, 3), VireoDone) << sentence();
    ASSERT_EQ(vireoChainKeys(chain.get(), 0, VireoMix, keys, 3, &count), VireoDone);
    EXPECT_EQ(vireoChainSetKeys(same.get(), 0, VireoMix, keys, count), VireoDone) << sentence();
    EXPECT_EQ(textOf(same), text);

    ASSERT_EQ(vireoChainSetValue(chain.get(), 0, VireoMix, 9), VireoDone);
    ASSERT_EQ(vireoChainKeys(chain.get(), 0, VireoMix, nullptr, 0, &count), VireoDone);
    EXPECT_EQ(count, 0U);
    const VireoKey backwards[] = {{5, 0, 1, VireoLinear}, {4, 0, 1, VireoLinear}};
    EXPECT_EQ(vireoChainSetKeys(chain.get(), 0, VireoMix, backwards, 2), VireoBadValue);
    const ChainHandle box = newChain("Color Replace");
    const VireoKey on{0, 0, 1, VireoLinear};
    EXPECT_EQ(vireoChainSetKeys(box.get(), 0, parameterOf(box, "solid"), &on, 1), VireoBadValue);
    EXPECT_THAT(sentence(), testing::EndsWith("is a check box and takes no key frames"));
    const VireoKey tooHigh{0, 0, 101, VireoLinear};
    EXPECT_EQ(vireoChainSetKeys(chain.get(), 0, VireoMix, &tooHigh, 1), VireoBadValue);
    EXPECT_EQ(valueText(chain, VireoMix), "9%");
}

TEST(InterfaceValues, KeepTheSecondsOfKeys) {
    const ChainHandle chain = newChain("Solarize");
    const std::pair<double, const char*> cases[] = {
        {0, "1@0s"},     {4.9999999999, "1@5s"}, {1.0 / 3, "1@0.333333333s"}, {1e9, "1@1000000000s"},
        {1e-12, "1@0s"}, {59.999, "1@59.999s"}};
    for (const auto& [seconds, text] : cases) {
        const VireoKey key{-1, seconds, 1, VireoLinear};
        ASSERT_EQ(vireoChainSetKeys(chain.get(), 0, 0, &key, 1), VireoDone) << sentence();
        EXPECT_EQ(valueText(chain, 0), text);
    }
    const VireoKey farFrame{INT64_MAX, 0, 1, VireoLinear};
    ASSERT_EQ(vireoChainSetKeys(chain.get(), 0, 0, &farFrame, 1), VireoDone) << sentence();
    EXPECT_EQ(textOf(newChain(textOf(chain))), textOf(chain));
}

TEST(InterfaceBytes, AreTheSettingsHandle) {
    const ChainHandle chain =
        newChain("Color Pass; Solarize:threshold=0@0f..200@10f; Black & White; Horizontal Hold:offset=-2");
    using Bytes = std::vector<std::uint8_t>;
    EXPECT_EQ(bytesOf(chain, 1, 5), (Bytes{100, 0}));
    EXPECT_EQ(bytesOf(chain, 2), Bytes());
    EXPECT_EQ(bytesOf(chain, 3), (Bytes{254, 255, 255, 255, 0, 0, 0, 0}));
    // One more than the parameters take. A colour's fourth byte means nothing.
    const Bytes whole{5, 0, 0, 1, 2, 3, 0xEE, 9};
    ASSERT_EQ(vireoChainSetBytes(chain.get(), 0, whole.data(), whole.size()), VireoDone) << sentence();
    EXPECT_EQ(vireoChainSetBytes(chain.get(), 0, whole.data(), whole.size() - 2), VireoUsage);
    EXPECT_EQ(bytesOf(chain), whole);
    EXPECT_EQ(valueAt(chain, parameterOf(chain, "Color"), 0), 0x010203);
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
    for (const char value : {10, 99, 5, 98, 97, 11, 96, 6, 95, 94, 12, 93, 7, 92, 91, 13, 90, 8, 89, 88})
        file.append({value, '\0'});
    const ChainHandle chain = newChain();
    ASSERT_EQ(vireoChainAddLevels(chain.get(), file.data(), file.size(), nullptr), VireoDone) << sentence();
    EXPECT_EQ(valueAt(chain, 0, 0), 10);
    for (const ChainHandle& same : {newChain(textOf(chain)), newChain(textOf(chain, VireoSpellingCompact))}) {
        void* content = nullptr;
        std::size_t length = 0;
        ASSERT_EQ(vireoChainLevels(same.get(), 0, nullptr, &content, &length), VireoDone);
        EXPECT_EQ(std::string(static_cast<char*>(content), length), file) << textOf(same);
        vireoFree(content);
    }

    const auto path = std::filesystem::temp_directory_path() /
                      ("vireo_levels_" + std::to_string(std::random_device()()) + ".lvl");
    std::ofstream(path, std::ios::binary) << file;
    const ChainHandle ofFile = newChain();
    EXPECT_EQ(vireoChainAddFile(ofFile.get(), path.string().c_str()), VireoDone) << sentence();
    std::filesystem::remove(path);
    EXPECT_EQ(textOf(ofFile), textOf(chain));
}

}  // namespace
}  // namespace vireo::test
