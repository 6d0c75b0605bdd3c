// SPDX-License-Identifier: MIT
// Each allocation of each call fails once, in a program of its own: operator new is replaced.
#include "tests/engine/interface/interface_support.h"
#include "tests/host/short_memory.h"

#include <functional>

namespace vireo::test {
namespace {

constexpr char chainText[] =
    "Solarize:Threshold=0@0f..200@10f; Camera Blur; Ghosting:mix=50%; Levels:(RGB) Gamma=130";

/// What a call works on, made anew for each try.
struct Case {
    VireoChain* chain = nullptr;
    VireoStream* stream = nullptr;
    Pixels source{20, 40, {.layout = VireoRgba}, 1};
    VireoFrame result{.structSize = sizeof result, .width = 20, .height = 40, .layout = VireoArgb};
    VireoEngine* opened = nullptr;
    VireoChain* made = nullptr;
    void* bytes = nullptr;
    std::size_t length = 0;
    std::uint32_t number = 0;
    std::int32_t flag = 0;

    char** text() { return reinterpret_cast<char**>(&bytes); }

    Case() {
        EXPECT_EQ(vireoChainNew(engine(), &chain), VireoDone);
        EXPECT_EQ(vireoChainAddText(chain, chainText), VireoDone);
        EXPECT_EQ(vireoStreamNew(chain, &stream), VireoDone);
    }
    ~Case() {
        vireoStreamClose(stream);
        vireoChainClose(chain);
        vireoChainClose(made);
        vireoClose(opened);
        vireoFrameRelease(&result);
        vireoFree(bytes);
    }
};

std::int32_t blackFrame(void*, std::int64_t, const VireoFrame*, VireoTime*) { return 0; }

const std::string levels = "L" + std::string(43, '\0').replace(1, 1, "V");
const VireoTime late = moment(11, 40, 1);
const VireoOpenOptions openOptions{sizeof openOptions, VIREO_TESTED_MODULE, nullptr};
const VireoKey keys[] = {{0, 0, 1, VireoSmooth}, {-1, 2.5, 200, VireoLinear}};

struct Call {
    const char* name;
    std::function<VireoStatus(Case&)> call;
    bool changes = false;  ///< What the chain is.
};

// Not those that search folders or read and write settings files: std::filesystem and the JSON library do not
// survive it themselves.
const Call calls[] = {
    {"open", [](Case& c) { return vireoOpen(&openOptions, &c.opened); }},
    {"translate",
     [](Case& c) { return vireoTranslate(engine(), "$$$/Vireo/Filters/Solarize/Name=Solarize", c.text()); }},
    {"find filter", [](Case& c) { return vireoFindFilter(engine(), "solariz", &c.number); }},
    {"new chain", [](Case& c) { return vireoChainNew(engine(), &c.made); }},
    {"copy", [](Case& c) { return vireoChainCopy(c.chain, &c.made); }},
    {"add text",
     [](Case& c) { return vireoChainAddText(c.chain, "Bend; Color Pass:color=red@0s..blue@5s,mix=9"); },
     true},
    {"add filter", [](Case& c) { return vireoChainAddFilter(c.chain, 3); }, true},
    {"add Levels",
     [](Case& c) { return vireoChainAddLevels(c.chain, levels.data(), levels.size(), nullptr); }, true},
    {"remove", [](Case& c) { return vireoChainRemove(c.chain, 1); }, true},
    {"move", [](Case& c) { return vireoChainMove(c.chain, 0, 3); }, true},
    {"text", [](Case& c) { return vireoChainText(c.chain, VireoSpellingCompact, c.text()); }},
    {"find parameter", [](Case& c) { return vireoChainFindParameter(c.chain, 3, "(g) gamma", &c.flag); }},
    {"set", [](Case& c) { return vireoChainSet(c.chain, 0, 0, "0@0s..smooth..9@20s"); }, true},
    {"set value", [](Case& c) { return vireoChainSetValue(c.chain, 0, 0, 99); }, true},
    {"set keys", [](Case& c) { return vireoChainSetKeys(c.chain, 0, 0, keys, 2); }, true},
    {"set bytes", [](Case& c) { return vireoChainSetBytes(c.chain, 0, "\1\0", 2); }},
    {"unset", [](Case& c) { return vireoChainUnset(c.chain, 0, 0); }, true},
    {"get", [](Case& c) { return vireoChainGet(c.chain, 0, 0, c.text()); }},
    {"bytes", [](Case& c) { return vireoChainBytes(c.chain, 0, &late, &c.bytes, &c.length); }},
    {"needs",
     [](Case& c) {
         VireoNeeds needs{.structSize = sizeof needs};
         return vireoChainNeeds(c.chain, &needs);
     }},
    {"is identity", [](Case& c) { return vireoChainIsIdentity(c.chain, &late, &c.flag); }},
    {"render",
     [](Case& c) {
         const VireoRenderOptions options{sizeof options, blackFrame, nullptr, nullptr};
         return vireoChainRender(c.chain, &c.source.frame, &c.result, &late, &options);
     }},
    {"stream", [](Case& c) { return vireoStreamRender(c.stream, &c.source.frame, &c.result, nullptr); }},
};

std::string textNow(const Case& c) {
    return textFrom([&](char** text) { return vireoChainText(c.chain, VireoSpellingFull, text); });
}

void expectUntouched(const Case& c) {
    EXPECT_EQ(sentence(), "there is not enough memory");
    EXPECT_EQ(textNow(c), chainText);
    EXPECT_TRUE(c.opened == nullptr && c.made == nullptr && c.bytes == nullptr);
    EXPECT_EQ(c.result.pixels, nullptr);
}

class InterfaceAllocations : public testing::TestWithParam<Call> {
protected:
    InterfaceAllocations() {
        // What is made once is made here, and the strings of the last failure get long enough.
        const std::string longName(1000, 'x');
        std::uint32_t filter = 0;
        EXPECT_EQ(vireoFindFilter(engine(), longName.c_str(), &filter), VireoUnknownFilter);
        EXPECT_EQ(vireoChainSet(newChain("Solarize").get(), 0, 0, longName.c_str()), VireoBadValue);
        failing(1 << 30);
        const CountedMemory memory(1 << 30);
        const Case c;
        made_ = memory.allocations();
    }

    struct Outcome {
        VireoStatus status;
        bool hasFailed;
    };

    /// Makes the call with an allocation of it that fails.
    Outcome failing(int number) {
        const CountedMemory memory(made_ + number);
        Outcome outcome{};
        {
            Case c;
            outcome = {GetParam().call(c), memory.hasFailed()};
            if (outcome.status != VireoDone) {
                {
                    const CountedMemory::Pause pause;
                    EXPECT_EQ(outcome.status, VireoNoMemory) << sentence();
                    expectUntouched(c);
                }
                EXPECT_EQ(GetParam().call(c), VireoDone) << "the handles are as good as before";
            }
            const CountedMemory::Pause pause;
            EXPECT_EQ(textNow(c) != chainText, GetParam().changes);
        }
        // Pictures that were kept for later ones went with the chain. What a service keeps may go with a
        // failure and be made again by the next call.
        if (made_ > 0) kept_ += memory.live();
        EXPECT_LE(kept_, 0) << "leaked";
        return outcome;
    }

private:
    int made_ = 0;  ///< Allocations before the call.
    int kept_ = 0;  ///< What was left of all calls.
};

TEST_P(InterfaceAllocations, MayFailOnceEach) {
    int refused = 0;
    for (int number = 1;; ++number) {
        SCOPED_TRACE(number);
        const Outcome outcome = failing(number);
        if (!outcome.hasFailed) break;
        if (outcome.status != VireoDone) ++refused;
    }
    EXPECT_GT(refused, std::string(GetParam().name) == "render" ? 5 : -1);
}

INSTANTIATE_TEST_SUITE_P(Calls, InterfaceAllocations, testing::ValuesIn(calls), [](const auto& tested) {
    std::string name = tested.param.name;
    std::erase(name, ' ');
    return name;
});

}  // namespace
}  // namespace vireo::test
