// SPDX-License-Identifier: MIT
// What makes no sense is refused and changes nothing.
#include "tests/engine/interface/interface_support.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>
#include <tuple>
#include <vector>

namespace vireo::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(InterfaceErrors, OfOpeningSayWhatIsMissing) {
    VireoEngine* none = nullptr;
    const VireoOpenOptions nowhere{sizeof nowhere, "no/such/module.vrmp", nullptr};
    EXPECT_EQ(vireoOpen(&nowhere, &none), VireoNoModule);
    EXPECT_THAT(sentence(), HasSubstr("no/such/module.vrmp"));
    const VireoOpenOptions another{sizeof another, VIREO_OTHER_LIBRARY, nullptr};
    EXPECT_EQ(vireoOpen(&another, &none), VireoNoModule);
    EXPECT_THAT(sentence(), HasSubstr(" is no Vireo module: it does not export "));
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

// Threads that end give back what they hold while others take memory.
TEST(InterfaceErrors, EndWithTheirThreads) {
    const std::string unknown(300, 'x');
    const auto fail = [&] {
        std::uint32_t filter = 0;
        EXPECT_EQ(vireoFindFilter(engine(), unknown.c_str(), &filter), VireoUnknownFilter);
        EXPECT_THAT(vireoLastError()->sentence, HasSubstr(unknown));
    };
    std::vector<std::thread> beside;
    for (int i = 0; i < 4; ++i) {
        beside.emplace_back([&] {
            for (int round = 0; round < 100; ++round) std::thread(fail).join();
        });
    }
    for (std::thread& thread : beside) thread.join();
}

/// A place of any type, which nobody may write to: a struct there tells a size that is large enough.
struct Anywhere {
    alignas(std::max_align_t) static inline std::uint8_t bytes[1024];

    template <class Type>
    operator Type*() const {
        return reinterpret_cast<Type*>(bytes);
    }
};

class InterfaceUsage : public testing::Test {
protected:
    const ChainHandle chain = newChain("Levels; Solarize");
    VireoChain* const c = chain.get();
    VireoEngine* const e = engine();
    Pixels pixels{4, 4, {}, 1};
    VireoFrame* const frame = &pixels.frame;
    VireoKey key{0, 0, 1, VireoLinear};
    const Anywhere any{};

    InterfaceUsage() { std::memset(Anywhere::bytes, 1, sizeof Anywhere::bytes); }
    ~InterfaceUsage() override {
        EXPECT_EQ(textOf(chain), "Levels; Solarize");
        EXPECT_EQ(std::ranges::count(Anywhere::bytes, 1), std::ssize(Anywhere::bytes));
    }
};

/// Each pointer is null once, but for those that may be and are given as null.
template <class... Parameters, class... Arguments>
void expectNullsRefused(const char* name, VireoStatus (*call)(Parameters...), Arguments... given) {
    const std::tuple<Parameters...> whole(given...);
    const auto refuse = [&]<std::size_t index, class Parameter, class Argument>() {
        if constexpr (std::is_pointer_v<Parameter> && !std::is_null_pointer_v<Argument>) {
            auto arguments = whole;
            std::get<index>(arguments) = nullptr;
            EXPECT_EQ(std::apply(call, arguments), VireoUsage) << name << ", argument " << index;
        }
    };
    [&]<std::size_t... index>(std::index_sequence<index...>) {
        (refuse.template operator()<index, Parameters, Arguments>(), ...);
    }
    (std::index_sequence_for<Parameters...>{});
}
#define EXPECT_NULLS_REFUSED(call, ...) expectNullsRefused(#call, call, __VA_ARGS__)

TEST_F(InterfaceUsage, IsToGiveWhatIsNeeded) {
    EXPECT_NULLS_REFUSED(vireoOpen, nullptr, any);
    EXPECT_NULLS_REFUSED(vireoSetLanguage, e, "en");
    EXPECT_NULLS_REFUSED(vireoTranslate, e, "a", any);
    EXPECT_NULLS_REFUSED(vireoDescribeFilter, e, 0, any);
    EXPECT_NULLS_REFUSED(vireoFindFilter, e, "a", any);
    EXPECT_NULLS_REFUSED(vireoDescribeParameter, e, 0, 0, any);
    EXPECT_NULLS_REFUSED(vireoDescribeChoice, e, 0, 0, 0, any);
    EXPECT_NULLS_REFUSED(vireoPresetCount, e, any);
    EXPECT_NULLS_REFUSED(vireoDescribePreset, e, 0, any);
    EXPECT_NULLS_REFUSED(vireoChainNew, e, any);
    EXPECT_NULLS_REFUSED(vireoChainCopy, c, any);
    EXPECT_NULLS_REFUSED(vireoChainAddText, c, "Levels");
    EXPECT_NULLS_REFUSED(vireoChainAddFilter, c, 0);
    EXPECT_NULLS_REFUSED(vireoChainAddPreset, c, "a");
    EXPECT_NULLS_REFUSED(vireoChainAddSettings, c, "a", 1, nullptr);
    EXPECT_NULLS_REFUSED(vireoChainAddLevels, c, "a", 1, nullptr);
    EXPECT_NULLS_REFUSED(vireoChainAddFile, c, "a");
    EXPECT_NULLS_REFUSED(vireoChainFilter, c, 0, any);
    EXPECT_NULLS_REFUSED(vireoChainRemove, c, 0);
    EXPECT_NULLS_REFUSED(vireoChainMove, c, 0, 0);
    EXPECT_NULLS_REFUSED(vireoChainText, c, VireoSpellingFull, any);
    EXPECT_NULLS_REFUSED(vireoChainFilterText, c, 0, VireoSpellingFull, any);
    EXPECT_NULLS_REFUSED(vireoChainSettings, c, any);
    EXPECT_NULLS_REFUSED(vireoChainFindParameter, c, 0, "(r)", any);
    EXPECT_NULLS_REFUSED(vireoChainSet, c, 0, 0, "1");
    EXPECT_NULLS_REFUSED(vireoChainGet, c, 0, 0, any);
    EXPECT_NULLS_REFUSED(vireoChainUnset, c, 0, 0);
    EXPECT_NULLS_REFUSED(vireoChainIsSet, c, 0, 0, any);
    EXPECT_NULLS_REFUSED(vireoChainSetValue, c, 0, 0, 1);
    EXPECT_NULLS_REFUSED(vireoChainValue, c, 0, 0, nullptr, any);
    EXPECT_NULLS_REFUSED(vireoChainCovers, c, 0, nullptr, any);
    EXPECT_NULLS_REFUSED(vireoChainKeys, c, 0, 0, &key, 1, any);
    EXPECT_NULLS_REFUSED(vireoChainSetKeys, c, 0, 0, &key, 1);
    EXPECT_EQ(vireoChainSetKeys(c, 0, 0, &key, 0), VireoUsage);
    EXPECT_NULLS_REFUSED(vireoChainSetBytes, c, 0, "", 0);
    EXPECT_NULLS_REFUSED(vireoChainBytes, c, 0, nullptr, any, any);
    EXPECT_NULLS_REFUSED(vireoChainLevels, c, 0, nullptr, any, any);
    EXPECT_NULLS_REFUSED(vireoChainNeeds, c, any);
    EXPECT_NULLS_REFUSED(vireoChainAccepts, c, frame, 0);
    EXPECT_NULLS_REFUSED(vireoChainIsIdentity, c, nullptr, any);
    EXPECT_NULLS_REFUSED(vireoChainSetThreads, c, 1);
    EXPECT_NULLS_REFUSED(vireoChainRender, c, frame, frame, nullptr, nullptr);
    EXPECT_NULLS_REFUSED(vireoStreamNew, c, any);
    EXPECT_NULLS_REFUSED(vireoStreamRender, newStream(chain).get(), frame, frame, nullptr);
    EXPECT_EQ(vireoStreamRestart(nullptr), VireoUsage);
    EXPECT_EQ(vireoStreamSkip(nullptr, 0), VireoUsage);
    EXPECT_EQ(vireoStreamSkip(newStream(chain).get(), -1), VireoUsage);
    EXPECT_EQ(vireoFilterCount(nullptr), 0U);
    EXPECT_EQ(vireoChainLength(nullptr), 0U);
    vireoClose(nullptr);
    vireoChainClose(nullptr);
    vireoStreamClose(nullptr);
    vireoFrameRelease(nullptr);
    vireoFree(nullptr);
}

/// Gives a member of a struct a number that its enumeration may not have; C lets it through.
template <class Struct, class Member, class Number>
void put(Struct& into, Member Struct::*member, Number number) {
    static_assert(sizeof number >= sizeof(Member));
    std::memcpy(&(into.*member), &number, sizeof(Member));
}

TEST_F(InterfaceUsage, IsToGiveIndicesAndNumbersThatThereAre) {
    constexpr std::uint32_t far = UINT32_MAX;
    for (const std::uint32_t index : {22U, far}) {
        EXPECT_EQ(vireoDescribeFilter(e, index, any), VireoUsage);
        EXPECT_EQ(vireoDescribeParameter(e, index, 0, any), VireoUsage);
        EXPECT_EQ(vireoDescribeParameter(e, 0, index, any), VireoUsage);
        EXPECT_EQ(vireoDescribeChoice(e, 0, 0, index, any), VireoUsage);
        EXPECT_EQ(vireoChainAddFilter(c, index), VireoUsage);
    }
    EXPECT_EQ(vireoDescribePreset(e, far, any), VireoUsage);
    for (const std::uint32_t position : {2U, far}) {
        EXPECT_EQ(vireoChainFilter(c, position, any), VireoUsage);
        EXPECT_EQ(vireoChainRemove(c, position), VireoUsage);
        EXPECT_EQ(vireoChainMove(c, 0, position), VireoUsage);
        EXPECT_EQ(vireoChainMove(c, position, 0), VireoUsage);
    }
    for (const std::int32_t index : {1, -4, INT32_MAX, INT32_MIN}) {
        SCOPED_TRACE(index);
        EXPECT_EQ(vireoChainSet(c, 1, index, "1"), VireoUsage);
        EXPECT_EQ(vireoChainGet(c, 1, index, any), VireoUsage);
        EXPECT_EQ(vireoChainUnset(c, 1, index), VireoUsage);
        EXPECT_EQ(vireoChainIsSet(c, 1, index, any), VireoUsage);
    }
    for (const std::int32_t index : std::initializer_list<std::int32_t>{1, VireoFrom, VireoTo, INT32_MIN}) {
        EXPECT_EQ(vireoChainSetValue(c, 1, index, 1), VireoUsage);
        EXPECT_EQ(vireoChainValue(c, 1, index, nullptr, any), VireoUsage);
        EXPECT_EQ(vireoChainKeys(c, 1, index, nullptr, 0, any), VireoUsage);
        EXPECT_EQ(vireoChainSetKeys(c, 1, index, &key, 1), VireoUsage);
    }
    for (const double seconds : {-0.5, 2e9, std::nan("")}) {
        const VireoKey nowhere{-1, seconds, 1, VireoLinear};
        EXPECT_EQ(vireoChainSetKeys(c, 0, 0, &nowhere, 1), VireoUsage);
    }
    VireoSpelling spelling;
    put(key, &VireoKey::transition, 77);
    std::memcpy(&spelling, &key.transition, sizeof spelling);
    EXPECT_EQ(vireoChainSetKeys(c, 0, 0, &key, 1), VireoUsage);
    EXPECT_EQ(vireoChainText(c, spelling, any), VireoUsage);
    EXPECT_EQ(vireoChainFilterText(c, 0, spelling, any), VireoUsage);
    EXPECT_EQ(vireoChainLevels(c, 1, nullptr, any, any), VireoUsage);
    EXPECT_EQ(vireoChainSetBytes(c, 0, "abc", 3), VireoUsage);
    for (const std::uint32_t threads : {0U, 1025U, far})
        EXPECT_EQ(vireoChainSetThreads(c, threads), VireoUsage);
}

TEST(InterfaceErrors, OfFramesAndTimesAreUsage) {
    const ChainHandle chain = newChain("Solarize");
    Pixels source(4, 4, {.gap = 64}, 1), own(4, 4, {.gap = 64}, 2);
    const auto render = [&](const VireoFrame& from, VireoFrame to, const VireoTime& time) {
        const VireoStatus status = vireoChainRender(chain.get(), &from, &to, &time, nullptr);
        EXPECT_EQ(to.owned, nullptr);
        return status;
    };
    const auto expectFrameRefused = [&](auto member, auto... numbers) {
        for (const std::int64_t number : {static_cast<std::int64_t>(numbers)...}) {
            VireoFrame from = source.frame, to = own.frame;
            put(from, member, number);
            put(to, member, number);
            if (to.pixels == nullptr) to = own.frame;  // a result without pixels is given some
            EXPECT_EQ(render(from, own.frame, moment(0)), VireoUsage) << number;
            EXPECT_EQ(render(from.pixels == nullptr ? from : source.frame, to, moment(0)), VireoUsage)
                << number;
        }
    };
    const auto expectTimeRefused = [&](auto member, auto... numbers) {
        for (const auto number : {numbers...}) {
            VireoTime time = moment(0);
            put(time, member, number);
            EXPECT_EQ(render(source.frame, own.frame, time), VireoUsage) << number;
        }
    };
    expectFrameRefused(&VireoFrame::structSize, 0);
    expectFrameRefused(&VireoFrame::width, 0, 3, INT32_MAX);
    expectFrameRefused(&VireoFrame::height, 0, -4);
    expectFrameRefused(&VireoFrame::stride, 15, -15, INT64_MIN, INT64_MAX);
    expectFrameRefused(&VireoFrame::pixels, 0);
    expectFrameRefused(&VireoFrame::layout, 11, -1, 1000);
    expectFrameRefused(&VireoFrame::depth, 11, -1, 1000, VireoDepth16);
    expectTimeRefused(&VireoTime::structSize, 0);
    expectTimeRefused(&VireoTime::interlacing, 3, -1);
    expectTimeRefused(&VireoTime::frame, std::int64_t{-1}, std::int64_t{1} << 30, INT64_MAX);
    expectTimeRefused(&VireoTime::frames, std::int64_t{-1}, std::int64_t{1} << 30, INT64_MAX);
    expectTimeRefused(&VireoTime::rate, -1.0, std::nan(""), HUGE_VAL, 1e-9);
    expectTimeRefused(&VireoTime::seconds, std::nan(""), 1e300);
    EXPECT_EQ(render(source.frame, own.frame, moment(0)), VireoDone) << sentence();
}

TEST(InterfaceErrors, TellFromOneAnotherWhatAChainDoesNotRender) {
    const ChainHandle flip = newChain("Horizontal Flip"), chain = newChain("Horizontal Flip; Vertical Flip");
    const auto accepts = [](const ChainHandle& asked, int width, int height, VireoDepth depth,
                            int interlacing = 0) {
        const VireoFrame frame{sizeof frame, width, height, VireoRgba, depth, 0, nullptr, 0, nullptr};
        return vireoChainAccepts(asked.get(), &frame, interlacing);
    };
    for (const VireoDepth depth : {VireoDepth16, VireoDepthFloat})
        EXPECT_EQ(accepts(flip, 9000, 9000, depth), VireoDone);
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
    // An older caller's is filled in as far as it goes, a newer one's keeps what the engine does not know.
    for (const std::size_t known : {offsetof(VireoFilter, category), sizeof(VireoFilter)}) {
        struct {
            VireoFilter filter;
            std::uint64_t more;
        } given, before;
        std::memset(&given, 0x55, sizeof given);
        given.filter.structSize = known < sizeof(VireoFilter) ? known : sizeof given;
        std::memcpy(&before, &given, sizeof given);
        ASSERT_EQ(vireoDescribeFilter(engine(), 0, &given.filter), VireoDone);
        EXPECT_STREQ(given.filter.name, "Alpha Glow");
        EXPECT_EQ(given.filter.structSize, before.filter.structSize);
        EXPECT_EQ(given.filter.maximumRowBytes == INT32_MAX, known == sizeof(VireoFilter));
        EXPECT_EQ(std::memcmp(reinterpret_cast<char*>(&given) + known,
                              reinterpret_cast<char*>(&before) + known, sizeof given - known),
                  0);
    }
    // Half a pointer is none.
    const VireoOpenOptions options{offsetof(VireoOpenOptions, module) + 4, "nowhere", "nothing"};
    VireoEngine* opened = nullptr;
    EXPECT_EQ(vireoOpen(&options, &opened), VireoDone) << sentence();
    vireoClose(opened);
    // A result that does not tell of ownership cannot be given memory, nor a preset its texts.
    Pixels source(4, 4, {}, 1);
    VireoFrame result = source.frame;
    result.structSize = offsetof(VireoFrame, pixels);
    EXPECT_EQ(vireoChainRender(newChain().get(), &source.frame, &result, nullptr, nullptr), VireoUsage);
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
