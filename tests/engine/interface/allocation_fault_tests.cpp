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
    ChainHandle chain = newChain(chainText);
    StreamHandle stream = newStream(chain);
    Pixels source{20, 40, {.layout = VireoRgba}, 1};
    VireoFrame result{.structSize = sizeof result, .width = 20, .height = 40, .layout = VireoArgb};
    VireoEngine* opened = nullptr;
    VireoChain* made = nullptr;
    void* bytes = nullptr;
    std::size_t length = 0;
    std::uint32_t number = 0;
    std::int32_t flag = 0;
    VireoNeeds needs{.structSize = sizeof needs};

    char** text() { return reinterpret_cast<char**>(&bytes); }
    VireoStatus tried(const struct Call& call);

    ~Case() {
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
const VireoRenderOptions renderOptions{sizeof renderOptions, blackFrame, nullptr, nullptr};
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
    {"findFilter", [](Case& c) { return vireoFindFilter(engine(), "solariz", &c.number); }},
    {"newChain", [](Case& c) { return vireoChainNew(engine(), &c.made); }},
    {"copy", [](Case& c) { return vireoChainCopy(c.chain.get(), &c.made); }},
    {"addText",
     [](Case& c) { return vireoChainAddText(c.chain.get(), "Bend; Color Pass:color=red@0s..blue@5s,mix=9"); },
     true},
    {"addFilter", [](Case& c) { return vireoChainAddFilter(c.chain.get(), 3); }, true},
    {"addLevels",
     [](Case& c) { return vireoChainAddLevels(c.chain.get(), levels.data(), levels.size(), nullptr); }, true},
    {"remove", [](Case& c) { return vireoChainRemove(c.chain.get(), 1); }, true},
    {"move", [](Case& c) { return vireoChainMove(c.chain.get(), 0, 3); }, true},
    {"text", [](Case& c) { return vireoChainText(c.chain.get(), VireoSpellingCompact, c.text()); }},
    {"findParameter",
     [](Case& c) { return vireoChainFindParameter(c.chain.get(), 3, "(g) gamma", &c.flag); }},
    {"set", [](Case& c) { return vireoChainSet(c.chain.get(), 0, 0, "0@0s..smooth..9@20s"); }, true},
    {"setValue", [](Case& c) { return vireoChainSetValue(c.chain.get(), 0, 0, 99); }, true},
    {"setKeys", [](Case& c) { return vireoChainSetKeys(c.chain.get(), 0, 0, keys, 2); }, true},
    {"setBytes", [](Case& c) { return vireoChainSetBytes(c.chain.get(), 0, "\1\0", 2); }},
    {"unset", [](Case& c) { return vireoChainUnset(c.chain.get(), 0, 0); }, true},
    {"get", [](Case& c) { return vireoChainGet(c.chain.get(), 0, 0, c.text()); }},
    {"bytes", [](Case& c) { return vireoChainBytes(c.chain.get(), 0, &late, &c.bytes, &c.length); }},
    {"needs", [](Case& c) { return vireoChainNeeds(c.chain.get(), &c.needs); }},
    {"isIdentity", [](Case& c) { return vireoChainIsIdentity(c.chain.get(), &late, &c.flag); }},
    {"render",
     [](Case& c) {
         return vireoChainRender(c.chain.get(), &c.source.frame, &c.result, &late, &renderOptions);
     }},
    {"stream",
     [](Case& c) { return vireoStreamRender(c.stream.get(), &c.source.frame, &c.result, nullptr); }},
};

/// Makes the call, and once more where an allocation of it failed.
VireoStatus Case::tried(const Call& call) {
    const VireoStatus status = call.call(*this);
    if (status != VireoDone) {
        {
            const CountedMemory::Pause pause;
            EXPECT_EQ(status, VireoNoMemory);
            EXPECT_EQ(sentence(), "there is not enough memory");
            EXPECT_EQ(textOf(chain), chainText);
            EXPECT_TRUE(opened == nullptr && made == nullptr && bytes == nullptr);
            EXPECT_EQ(result.pixels, nullptr);
        }
        EXPECT_EQ(call.call(*this), VireoDone) << "the handles are as good as before";
    }
    const CountedMemory::Pause pause;
    EXPECT_EQ(textOf(chain) != chainText, call.changes);
    return status;
}

class InterfaceAllocations : public testing::TestWithParam<Call> {
protected:
    InterfaceAllocations() {
        // What is made once is made here, and the strings of the last failure get long enough.
        const std::string longName(1000, 'x');
        std::uint32_t filter = 0;
        EXPECT_EQ(vireoFindFilter(engine(), longName.c_str(), &filter), VireoUnknownFilter);
        EXPECT_EQ(vireoChainSet(newChain("Solarize").get(), 0, 0, longName.c_str()), VireoBadValue);
        Case().tried(GetParam());
        const CountedMemory memory(1 << 30);
        const Case c;
        before = memory.allocations();
    }

    int before;  ///< Allocations before the call.
};

TEST_P(InterfaceAllocations, MayFailOnceEach) {
    int refused = 0, kept = 0;
    bool hasFailed = true;
    for (int number = 1; hasFailed; ++number) {
        SCOPED_TRACE(number);
        const CountedMemory memory(before + number);
        if (Case().tried(GetParam()) != VireoDone) ++refused;
        hasFailed = memory.hasFailed();
        // Pictures that were kept for later ones went with the chain. What a service keeps may go with a
        // failure and be made again by the next call.
        kept += memory.live();
        EXPECT_LE(kept, 0) << "leaked";
    }
    EXPECT_GT(refused, std::string(GetParam().name) == "render" ? 5 : -1);
}

INSTANTIATE_TEST_SUITE_P(Calls, InterfaceAllocations, testing::ValuesIn(calls),
                         [](const auto& tested) { return std::string(tested.param.name); });

}  // namespace
}  // namespace vireo::test
