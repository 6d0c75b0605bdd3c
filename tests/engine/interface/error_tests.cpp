// SPDX-License-Identifier: MIT
// What fails says why and changes nothing; what makes no sense is refused.
#include "tests/engine/interface/interface_support.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <thread>

namespace vireo::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

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
        {"Solarize:treshold=2", VireoUnknownParameter, "Solarize has no parameter \"treshold\"; the nearest",
         9, "Solarize", "treshold", ""},
        {"Black & White:x=2", VireoUnknownParameter, "Black & White has no parameters, only from", 14,
         "Black & White", "x", ""},
        {"Solarize: threshold = 256", VireoBadValue,
         "Threshold of Solarize takes whole numbers from 0 to 254, not", 22, "Solarize", "Threshold", "256"},
        {"Solarize:threshold=0@0s..9@5x", VireoBadValue, "Threshold of Solarize has a key frame at \"5x\"",
         27, "Solarize", "Threshold", "0@0s..9@5x"},
        {"Solarize:threshold=0@5s..9@1s", VireoBadValue, "key frames must follow each other", 19, "Solarize",
         "Threshold", "0@5s..9@1s"},
        {"Solarize:mix=101", VireoBadValue, "mix of Solarize takes whole per cents from 0 to 100", 13,
         "Solarize", "mix", "101"},
        {"Solarize:from=soon", VireoBadValue, "from of Solarize takes a time like", 14, "Solarize", "from",
         "soon"},
        {"Solarize:threshold=", VireoBadValue, "Threshold of Solarize takes whole numbers", 19, "Solarize",
         "Threshold", ""},
        {"Solarize:threshold", VireoBadText,
         "\"threshold\" in the filter \"Solarize:threshold\" is not of the form", 9, "Solarize", "",
         "threshold"},
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
    EXPECT_THAT(sentence(), HasSubstr("from 0 to 1000, not \"1001\""));
    EXPECT_EQ(textOf(chain), before);
}

TEST(InterfaceErrors, OfFilesNameThemAndChangeNothing) {
    const ChainHandle chain = newChain("Solarize");
    const auto addSettings = [&](const std::string& text, const char* name) {
        return vireoChainAddSettings(chain.get(), text.data(), text.size(), name);
    };
    EXPECT_EQ(addSettings("{\"vireo\": 1, \"filters\": [", nullptr), VireoBadSettings);
    EXPECT_THAT(sentence(), StartsWith("the settings file settings: is no valid JSON at line 1"));
    EXPECT_EQ(addSettings("{\"vireo\": 1, \"filters\": [{\"filter\": \"Solarize\"}, {\"filter\": \"x\"}]}",
                          "my.json"),
              VireoBadSettings);
    EXPECT_THAT(sentence(), StartsWith("the settings file my.json at filters[1].filter: there is no filter"));
    EXPECT_EQ(addSettings("{\"vireo\": 2, \"filters\": []}", "my.json"), VireoBadSettings);
    EXPECT_EQ(addSettings("", "my.json"), VireoBadSettings);

    EXPECT_EQ(vireoChainAddLevels(chain.get(), "L\0V\0abc", 7, nullptr), VireoBadSettings);
    EXPECT_THAT(sentence(), HasSubstr("ends after 3 of the 40 bytes"));
    EXPECT_EQ(vireoChainAddLevels(chain.get(), "LxV", 3, "a.lvl"), VireoBadSettings);
    EXPECT_THAT(sentence(), StartsWith("a.lvl is no Levels file"));

    EXPECT_EQ(vireoChainAddFile(chain.get(), "no such file.json"), VireoFailed);
    EXPECT_EQ(sentence(), "cannot read no such file.json");
    EXPECT_EQ(vireoChainAddPreset(chain.get(), "no such preset"), VireoUnknownPreset);
    EXPECT_THAT(sentence(), StartsWith("there is no preset \"no such preset\""));
    EXPECT_EQ(textOf(chain), "Solarize");
}

TEST(InterfaceErrors, OfOpeningSayWhatIsMissing) {
    VireoEngine* none = nullptr;
    const VireoOpenOptions nowhere{sizeof nowhere, "no/such/module.vrmp", nullptr};
    EXPECT_EQ(vireoOpen(&nowhere, &none), VireoNoModule);
    EXPECT_THAT(sentence(), HasSubstr("no/such/module.vrmp"));
    const VireoOpenOptions klingon{sizeof klingon, nullptr, "tlh"};
    EXPECT_EQ(vireoOpen(&klingon, &none), VireoUsage);
    EXPECT_EQ(vireoSetLanguage(engine(), "tlh"), VireoUsage);
    EXPECT_EQ(none, nullptr);
}

TEST(InterfaceErrors, BelongToTheirThread) {
    EXPECT_EQ(vireoFindFilter(engine(), "nothing", nullptr), VireoUsage);
    std::thread([] {
        EXPECT_EQ(vireoLastError()->status, VireoDone);
        EXPECT_STREQ(vireoLastError()->sentence, "");
        EXPECT_EQ(vireoLastError()->offset, -1);
        std::uint32_t filter = 0;
        EXPECT_EQ(vireoFindFilter(engine(), "nothing", &filter), VireoUnknownFilter);
    }).join();
    EXPECT_EQ(vireoLastError()->status, VireoUsage);
}

// Every pointer of every call is null once.
TEST(InterfaceErrors, OfNullArgumentsAreUsage) {
    const ChainHandle chain = newChain("Levels; Solarize");
    VireoChain* const c = chain.get();
    const StreamHandle stream = newStream(chain);
    VireoEngine* const e = engine();
    Pixels pixels(4, 4, {}, 1);
    VireoFrame* const frame = &pixels.frame;
    char* text = nullptr;
    void* bytes = nullptr;
    std::size_t length = 0;
    std::uint32_t count = 0;
    std::int32_t number = 0;
    std::int64_t value = 0;
    const char* word = nullptr;
    VireoFilter filter{.structSize = sizeof filter};
    VireoParameter parameter{.structSize = sizeof parameter};
    VireoPreset preset{.structSize = sizeof preset};
    VireoNeeds needs{.structSize = sizeof needs};
    const VireoKey key{0, 0, 1, VireoLinear};

    const VireoStatus refused[] = {
        vireoOpen(nullptr, nullptr),
        vireoSetLanguage(nullptr, "en"),
        vireoSetLanguage(e, nullptr),
        vireoTranslate(nullptr, "a", &text),
        vireoTranslate(e, nullptr, &text),
        vireoTranslate(e, "a", nullptr),
        vireoDescribeFilter(nullptr, 0, &filter),
        vireoDescribeFilter(e, 0, nullptr),
        vireoFindFilter(nullptr, "a", &count),
        vireoFindFilter(e, nullptr, &count),
        vireoFindFilter(e, "a", nullptr),
        vireoDescribeParameter(nullptr, 0, 0, &parameter),
        vireoDescribeParameter(e, 0, 0, nullptr),
        vireoDescribeChoice(nullptr, 0, 0, 0, &word),
        vireoDescribeChoice(e, 0, 0, 0, nullptr),
        vireoPresetCount(nullptr, &count),
        vireoPresetCount(e, nullptr),
        vireoDescribePreset(nullptr, 0, &preset),
        vireoDescribePreset(e, 0, nullptr),
        vireoChainNew(nullptr, nullptr),
        vireoChainNew(e, nullptr),
        vireoChainCopy(nullptr, nullptr),
        vireoChainCopy(c, nullptr),
        vireoChainAddText(nullptr, "Levels"),
        vireoChainAddText(c, nullptr),
        vireoChainAddFilter(nullptr, 0),
        vireoChainAddPreset(nullptr, "a"),
        vireoChainAddPreset(c, nullptr),
        vireoChainAddSettings(nullptr, "a", 1, "a"),
        vireoChainAddSettings(c, nullptr, 1, "a"),
        vireoChainAddLevels(nullptr, "a", 1, "a"),
        vireoChainAddLevels(c, nullptr, 1, "a"),
        vireoChainAddFile(nullptr, "a"),
        vireoChainAddFile(c, nullptr),
        vireoChainFilter(nullptr, 0, &count),
        vireoChainFilter(c, 0, nullptr),
        vireoChainRemove(nullptr, 0),
        vireoChainMove(nullptr, 0, 0),
        vireoChainText(nullptr, VireoSpellingFull, &text),
        vireoChainText(c, VireoSpellingFull, nullptr),
        vireoChainFilterText(nullptr, 0, VireoSpellingFull, &text),
        vireoChainFilterText(c, 0, VireoSpellingFull, nullptr),
        vireoChainSettings(nullptr, &text),
        vireoChainSettings(c, nullptr),
        vireoChainFindParameter(nullptr, 0, "a", &number),
        vireoChainFindParameter(c, 0, nullptr, &number),
        vireoChainFindParameter(c, 0, "a", nullptr),
        vireoChainSet(nullptr, 0, 0, "1"),
        vireoChainSet(c, 0, 0, nullptr),
        vireoChainGet(nullptr, 0, 0, &text),
        vireoChainGet(c, 0, 0, nullptr),
        vireoChainUnset(nullptr, 0, 0),
        vireoChainIsSet(nullptr, 0, 0, &number),
        vireoChainIsSet(c, 0, 0, nullptr),
        vireoChainSetValue(nullptr, 0, 0, 1),
        vireoChainValue(nullptr, 0, 0, nullptr, &value),
        vireoChainValue(c, 0, 0, nullptr, nullptr),
        vireoChainCovers(nullptr, 0, nullptr, &number),
        vireoChainCovers(c, 0, nullptr, nullptr),
        vireoChainKeys(nullptr, 0, 0, nullptr, 0, &count),
        vireoChainKeys(c, 0, 0, nullptr, 1, &count),
        vireoChainKeys(c, 0, 0, nullptr, 0, nullptr),
        vireoChainSetKeys(nullptr, 0, 0, &key, 1),
        vireoChainSetKeys(c, 0, 0, nullptr, 1),
        vireoChainSetKeys(c, 0, 0, &key, 0),
        vireoChainSetBytes(nullptr, 0, "", 0),
        vireoChainSetBytes(c, 0, nullptr, 0),
        vireoChainBytes(nullptr, 0, nullptr, &bytes, &length),
        vireoChainBytes(c, 0, nullptr, nullptr, &length),
        vireoChainBytes(c, 0, nullptr, &bytes, nullptr),
        vireoChainLevels(nullptr, 0, nullptr, &bytes, &length),
        vireoChainLevels(c, 0, nullptr, nullptr, &length),
        vireoChainLevels(c, 0, nullptr, &bytes, nullptr),
        vireoChainNeeds(nullptr, &needs),
        vireoChainNeeds(c, nullptr),
        vireoChainAccepts(nullptr, frame, 0),
        vireoChainAccepts(c, nullptr, 0),
        vireoChainIsIdentity(nullptr, nullptr, &number),
        vireoChainIsIdentity(c, nullptr, nullptr),
        vireoChainSetThreads(nullptr, 1),
        vireoChainRender(nullptr, frame, frame, nullptr, nullptr),
        vireoChainRender(c, nullptr, frame, nullptr, nullptr),
        vireoChainRender(c, frame, nullptr, nullptr, nullptr),
        vireoStreamNew(nullptr, nullptr),
        vireoStreamNew(c, nullptr),
        vireoStreamRender(nullptr, frame, frame, nullptr),
        vireoStreamRender(stream.get(), nullptr, frame, nullptr),
        vireoStreamRender(stream.get(), frame, nullptr, nullptr),
        vireoStreamRestart(nullptr),
    };
    for (std::size_t i = 0; i < std::size(refused); ++i) EXPECT_EQ(refused[i], VireoUsage) << "call " << i;
    EXPECT_EQ(textOf(chain), "Levels; Solarize");
    EXPECT_EQ(vireoFilterCount(nullptr), 0U);
    EXPECT_EQ(vireoChainLength(nullptr), 0U);
    vireoClose(nullptr);
    vireoChainClose(nullptr);
    vireoStreamClose(nullptr);
    vireoFrameRelease(nullptr);
    vireoFree(nullptr);
}

TEST(InterfaceErrors, OfIndicesAndNumbersOutsideTheirRangeAreUsage) {
    const ChainHandle chain = newChain("Solarize; Ghosting");
    VireoChain* const c = chain.get();
    constexpr std::uint32_t far = UINT32_MAX;
    char* text = nullptr;
    void* bytes = nullptr;
    std::size_t length = 0;
    std::uint32_t count = 0;
    std::int32_t number = 0;
    std::int64_t value = 0;
    const char* word = nullptr;
    VireoFilter filter{.structSize = sizeof filter};
    VireoParameter parameter{.structSize = sizeof parameter};
    VireoPreset preset{.structSize = sizeof preset};
    for (const std::uint32_t filterIndex : {22U, far}) {
        EXPECT_EQ(vireoDescribeFilter(engine(), filterIndex, &filter), VireoUsage);
        EXPECT_EQ(vireoDescribeParameter(engine(), filterIndex, 0, &parameter), VireoUsage);
        EXPECT_EQ(vireoDescribeParameter(engine(), 0, filterIndex, &parameter), VireoUsage);
        EXPECT_EQ(vireoDescribeChoice(engine(), 0, 0, filterIndex, &word), VireoUsage);
        EXPECT_EQ(vireoChainAddFilter(c, filterIndex), VireoUsage);
    }
    EXPECT_EQ(vireoDescribePreset(engine(), far, &preset), VireoUsage);
    for (const std::uint32_t position : {2U, far}) {
        EXPECT_EQ(vireoChainFilter(c, position, &count), VireoUsage);
        EXPECT_EQ(vireoChainRemove(c, position), VireoUsage);
        EXPECT_EQ(vireoChainMove(c, 0, position), VireoUsage);
        EXPECT_EQ(vireoChainMove(c, position, 0), VireoUsage);
        EXPECT_EQ(vireoChainSet(c, position, 0, "1"), VireoUsage);
        EXPECT_EQ(vireoChainCovers(c, position, nullptr, &number), VireoUsage);
    }
    for (const std::int32_t index : {1, -4, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(index);
        const VireoKey key{0, 0, 1, VireoLinear};
        EXPECT_EQ(vireoChainSet(c, 0, index, "1"), VireoUsage);
        EXPECT_EQ(vireoChainGet(c, 0, index, &text), VireoUsage);
        EXPECT_EQ(vireoChainUnset(c, 0, index), VireoUsage);
        EXPECT_EQ(vireoChainIsSet(c, 0, index, &number), VireoUsage);
        EXPECT_EQ(vireoChainSetValue(c, 0, index, 1), VireoUsage);
        EXPECT_EQ(vireoChainValue(c, 0, index, nullptr, &value), VireoUsage);
        EXPECT_EQ(vireoChainKeys(c, 0, index, nullptr, 0, &count), VireoUsage);
        EXPECT_EQ(vireoChainSetKeys(c, 0, index, &key, 1), VireoUsage);
    }
    for (const std::int32_t timeWord : {VireoFrom, VireoTo}) {
        EXPECT_EQ(vireoChainSetValue(c, 0, timeWord, 1), VireoUsage);
        EXPECT_EQ(vireoChainValue(c, 0, timeWord, nullptr, &value), VireoUsage);
    }
    for (const VireoKey& key : {VireoKey{-1, -0.5, 1, VireoLinear}, VireoKey{-1, 2e9, 1, VireoLinear},
                                VireoKey{-1, std::nan(""), 1, VireoLinear}}) {
        EXPECT_EQ(vireoChainSetKeys(c, 0, 0, &key, 1), VireoUsage);
    }
    // What no enumeration has; C lets them through.
    VireoKey key{0, 0, 1, VireoLinear};
    VireoSpelling spelling = VireoSpellingFull;
    const std::int32_t odd = 77;
    std::memcpy(&key.transition, &odd, sizeof odd);
    std::memcpy(&spelling, &odd, sizeof odd);
    EXPECT_EQ(vireoChainSetKeys(c, 0, 0, &key, 1), VireoUsage);
    EXPECT_EQ(vireoChainText(c, spelling, &text), VireoUsage);
    EXPECT_EQ(vireoChainFilterText(c, 0, spelling, &text), VireoUsage);
    EXPECT_EQ(vireoChainLevels(c, 0, nullptr, &bytes, &length), VireoUsage);
    EXPECT_EQ(vireoChainSetBytes(c, 0, "abc", 3), VireoUsage);
    for (const std::uint32_t threads : {0U, 1025U, far})
        EXPECT_EQ(vireoChainSetThreads(c, threads), VireoUsage);
    EXPECT_EQ(textOf(chain), "Solarize; Ghosting");
}

TEST(InterfaceErrors, OfFramesAndTimesAreUsage) {
    const ChainHandle chain = newChain("Solarize");
    std::vector<std::uint8_t> memory(4096);
    const VireoFrame good{sizeof good, 4, 4, VireoBgra, VireoDepth8, 0, memory.data(), 16, nullptr};
    VireoFrame result = good;
    result.pixels = memory.data() + 1024;
    const auto refuse = [&](auto&& damage) {
        VireoFrame bad = good;
        damage(bad);
        EXPECT_EQ(vireoChainRender(chain.get(), &bad, &result, nullptr, nullptr), VireoUsage);
        VireoFrame badResult = result;
        damage(badResult);
        if (badResult.pixels != nullptr) {
            EXPECT_EQ(vireoChainRender(chain.get(), &good, &badResult, nullptr, nullptr), VireoUsage);
        }
    };
    refuse([](VireoFrame& frame) { frame.structSize = 0; });
    refuse([](VireoFrame& frame) { frame.width = 0; });
    refuse([](VireoFrame& frame) { frame.height = -4; });
    refuse([](VireoFrame& frame) { frame.width = INT32_MAX; });
    refuse([](VireoFrame& frame) { frame.stride = 15; });
    refuse([](VireoFrame& frame) { frame.stride = -15; });
    refuse([](VireoFrame& frame) { frame.stride = INT64_MIN; });
    refuse([](VireoFrame& frame) { frame.stride = INT64_MAX; });
    refuse([](VireoFrame& frame) { frame.pixels = nullptr; });
    for (const std::int32_t odd : {11, -1, 1000}) {
        refuse([odd](VireoFrame& frame) { std::memcpy(&frame.layout, &odd, sizeof odd); });
        refuse([odd](VireoFrame& frame) { std::memcpy(&frame.depth, &odd, sizeof odd); });
    }
    for (const VireoFrame& other :
         {VireoFrame{sizeof(VireoFrame), 5, 4, VireoBgra, VireoDepth8, 0, nullptr, 0, nullptr},
          VireoFrame{sizeof(VireoFrame), 4, 4, VireoBgra, VireoDepth16, 0, nullptr, 0, nullptr}}) {
        VireoFrame unlike = other;
        EXPECT_EQ(vireoChainRender(chain.get(), &good, &unlike, nullptr, nullptr), VireoUsage);
        EXPECT_EQ(unlike.pixels, nullptr);
    }
    const double nan = std::nan(""), infinity = std::numeric_limits<double>::infinity();
    for (const VireoTime& time :
         {VireoTime{sizeof(VireoTime), 3, 0, 0, 25, 0}, VireoTime{sizeof(VireoTime), -1, 0, 0, 25, 0},
          VireoTime{sizeof(VireoTime), 0, -1, 0, 25, 0}, VireoTime{sizeof(VireoTime), 0, 1 << 30, 0, 25, 0},
          VireoTime{sizeof(VireoTime), 0, 0, -1, 25, 0}, VireoTime{sizeof(VireoTime), 0, 0, INT64_MAX, 25, 0},
          VireoTime{sizeof(VireoTime), 0, 0, 0, -1, 0}, VireoTime{sizeof(VireoTime), 0, 0, 0, nan, 0},
          VireoTime{sizeof(VireoTime), 0, 0, 0, infinity, 0}, VireoTime{sizeof(VireoTime), 0, 0, 0, 25, nan},
          VireoTime{}}) {
        EXPECT_EQ(vireoChainRender(chain.get(), &good, &result, &time, nullptr), VireoUsage);
    }
    EXPECT_EQ(vireoChainRender(chain.get(), &good, &result, nullptr, nullptr), VireoDone) << sentence();
}

TEST(InterfaceErrors, TellFromOneAnotherWhatAChainDoesNotRender) {
    const ChainHandle flip = newChain("Horizontal Flip"), chain = newChain("Horizontal Flip; Vertical Flip");
    const auto accepts = [](const ChainHandle& asked, int width, int height, VireoDepth depth,
                            int interlacing = 0) {
        const VireoFrame frame{sizeof frame, width, height, VireoRgba, depth, 0, nullptr, 0, nullptr};
        return vireoChainAccepts(asked.get(), &frame, interlacing);
    };
    EXPECT_EQ(accepts(flip, 9000, 9000, VireoDepth16), VireoDone);
    EXPECT_EQ(accepts(flip, 9000, 9000, VireoDepthFloat), VireoDone);
    EXPECT_EQ(accepts(chain, 4, 4, VireoDepth16), VireoUnsupported);
    EXPECT_EQ(accepts(chain, 4, 40000, VireoDepth8), VireoTooLarge);
    EXPECT_THAT(sentence(), StartsWith("Vertical Flip takes frames up to 32767 pixels high"));
    EXPECT_EQ(accepts(chain, 4, 40000, VireoDepth8, 1), VireoDone) << "its fields are half as high";
    EXPECT_EQ(accepts(chain, 4, 4, VireoDepth8, 3), VireoUsage);
    EXPECT_EQ(accepts(newChain(), 4, 40000, VireoDepthFloat), VireoDone);

    Pixels deep(4, 4, {.depth = VireoDepth16}, 1);
    VireoFrame none{.structSize = sizeof none, .width = 4, .height = 4, .layout = VireoBgra};
    EXPECT_EQ(vireoChainRender(chain.get(), &deep.frame, &none, nullptr, nullptr), VireoUnsupported);
    EXPECT_EQ(none.pixels, nullptr) << "nothing is handed out";
}

TEST(InterfaceStructs, MayBeOlderOrNewerThanTheEngine) {
    // An older caller's is filled in as far as it goes.
    VireoFilter filter{};
    std::memset(&filter, 0x55, sizeof filter);
    filter.structSize = offsetof(VireoFilter, category);
    ASSERT_EQ(vireoDescribeFilter(engine(), 0, &filter), VireoDone);
    EXPECT_STREQ(filter.name, "Alpha Glow");
    EXPECT_EQ(filter.structSize, offsetof(VireoFilter, category));
    EXPECT_EQ(filter.parameterCount, 0x55555555U);
    // A newer caller's keeps what the engine does not know.
    struct {
        VireoFilter known;
        std::uint64_t more;
    } newer{{.structSize = sizeof newer}, 7};
    ASSERT_EQ(vireoDescribeFilter(engine(), 0, &newer.known), VireoDone);
    EXPECT_EQ(newer.known.parameterCount, 6U);
    EXPECT_EQ(newer.known.maximumRowBytes, INT32_MAX);
    EXPECT_EQ(newer.more, 7U);
    // Half a pointer is none.
    VireoOpenOptions options{offsetof(VireoOpenOptions, module) + 4, "nowhere", "nothing"};
    VireoEngine* opened = nullptr;
    EXPECT_EQ(vireoOpen(&options, &opened), VireoDone) << sentence();
    vireoClose(opened);
    // A result that does not tell of ownership cannot be given memory.
    Pixels source(4, 4, {}, 1);
    VireoFrame result = source.frame;
    result.structSize = offsetof(VireoFrame, pixels);
    EXPECT_EQ(vireoChainRender(newChain("Solarize").get(), &source.frame, &result, nullptr, nullptr),
              VireoUsage);
    VireoPreset preset{.structSize = offsetof(VireoPreset, file)};
    EXPECT_EQ(vireoDescribePreset(engine(), 0, &preset), VireoUsage);
    VireoTime time = moment(5);
    time.structSize = offsetof(VireoTime, seconds);
    time.seconds = 1000;
    std::int64_t value = 0;
    const ChainHandle animated = newChain("Solarize:threshold=0@0s..100@1s");
    ASSERT_EQ(vireoChainValue(animated.get(), 0, 0, &time, &value), VireoDone);
    EXPECT_EQ(value, 20);
}

}  // namespace
}  // namespace vireo::test
