// SPDX-License-Identifier: MIT
// Every allocation of every filter fails once, in a program of its own: operator new and vpixNew are
// replaced.
#include "host/heapkit/memory_handles.h"
#include "host/vireo_host.h"
#include "tests/host/short_memory.h"
#include "tests/support/filter_under_test.h"

#include <dlfcn.h>

#include <algorithm>
#include <exception>
#include <map>
#include <string>

namespace {

int liveBuffers = 0;
int liveHandles = 0;

template <class Function>
Function* next(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

MemoryHandle newHandle(std::size_t size) {
    if (CountedMemory::nextFails()) return nullptr;
    ++liveHandles;
    return HeapKit::newHandle(size);
}

void disposeHandle(MemoryHandle handle) {
    if (handle != nullptr) --liveHandles;
    HeapKit::disposeHandle(handle);
}

/// The reference host's table with memory that may fail. Its newVPix is the vpixNew below.
const HostCallbacks& faultyHost() {
    static const MemoryFunctions memory{{}, newHandle, {}, disposeHandle, {}, newHandle};
    static const HostCallbacks callbacks = [] {
        HostCallbacks table = *vireoHostCallbacks();
        table.memory = &memory;
        return table;
    }();
    return callbacks;
}

}  // namespace

// The library's own allocations for a buffer count as one with it.
FrameBuffer* vpixNew(const FrameRect* bounds) {
    static const auto real = next<decltype(vpixNew)>("vpixNew");
    if (CountedMemory::nextFails()) return nullptr;
    const CountedMemory::Pause pause;
    FrameBuffer* const buffer = real(bounds);
    if (buffer != nullptr) ++liveBuffers;
    return buffer;
}

void vpixDispose(FrameBuffer* handle) {
    static const auto real = next<decltype(vpixDispose)>("vpixDispose");
    if (handle != nullptr) --liveBuffers;
    const CountedMemory::Pause pause;
    real(handle);
}

namespace {

constexpr Geometry geometry{.width = 41, .height = 32};

std::int32_t brightFrame(std::uint32_t, FrameBuffer* target, const FrameRect* bounds, void*) {
    vpixFillRect(target, bounds, 0xFF80C0F0);
    return 0;
}

/// What a call came to.
struct Outcome {
    bool failed;  ///< Whether it met the failing allocation.
    std::int32_t result = 0;
    Picture picture = {};
    int leaked = 0;
    bool madeSettings = false;
    std::vector<std::uint8_t> settings = {};

    bool rendersLike(const Outcome& other) const {
        return result == other.result && picture == other.picture;
    }
};

class AllocationFaults : public testing::TestWithParam<std::uint32_t> {
protected:
    AllocationFaults() : source(geometry, sourcePicture()), untouched(geometry, random) {
        callWithMemory(FilterSelectorExecute, {});  // What is made once is made here.
    }

    /// Alpha Glow needs a shape; elsewhere softened alpha must not show.
    Picture sourcePicture() {
        Picture picture = noise(geometry.width, geometry.height, random);
        for (int y = 0; y < picture.height; ++y) {
            for (int x = 0; x < picture.width; ++x) {
                const bool solid = GetParam() != 10001 || (x > 10 && x < 20 && y > 8 && y < 20);
                picture.at(x, y) = (picture.at(x, y) & 0xFFFFFF) | (solid ? 0xFF000000 : 0);
            }
        }
        return picture;
    }

    Outcome call(std::int16_t selector, const std::vector<std::uint8_t>& settings, int failing) {
        FilterUnderTest filter(GetParam());
        TestFrame destination(geometry, untouched.picture());
        filter.invocation.hostCallbacks = &faultyHost();
        filter.invocation.getFrameCallback = brightFrame;
        filter.invocation.frameTime = 100;
        filter.invocation.sourceFrame = source.handle();
        filter.invocation.destFrame = destination.handle();
        if (!settings.empty()) filter.setSettings(settings);
        liveHandles = liveBuffers = 0;

        Outcome outcome{};
        {
            const CountedMemory memory(failing);
            try {
                outcome.result = filter.call(selector);
            } catch (const std::exception& exception) {
                ADD_FAILURE() << exception.what() << " passes through";
            }
            outcome.failed = memory.hasFailed();
            outcome.leaked = memory.live();
        }
        outcome.settings = filter.settings();
        outcome.madeSettings = settings.empty() && filter.invocation.settingsHandle != nullptr;
        outcome.picture = destination.picture();
        outcome.leaked += liveBuffers + liveHandles - (outcome.madeSettings ? 1 : 0);
        EXPECT_TRUE(destination.guardsHold());
        return outcome;
    }

    Outcome callWithMemory(std::int16_t selector, const std::vector<std::uint8_t>& settings) {
        return call(selector, settings, 1000000);
    }

    /// Calls onFault with the outcome of the call for each of its allocations that may fail.
    template <class OnFault>
    void forEachFault(std::int16_t selector, const std::vector<std::uint8_t>& settings, OnFault&& onFault) {
        for (int failing = 1;; ++failing) {
            SCOPED_TRACE("selector " + std::to_string(selector) + ", allocation " + std::to_string(failing));
            const Outcome outcome = call(selector, settings, failing);
            EXPECT_EQ(outcome.leaked, 0);
            if (!outcome.failed) return;
            onFault(outcome);
        }
    }

    /// What Execute may fall back to.
    std::map<std::string, Outcome> fallbacks(const std::vector<std::uint8_t>& settings) {
        const auto nothing = [&](std::int32_t result) { return Outcome{true, result, untouched.picture()}; };
        const Outcome copy{true, 0, source.picture()};
        // The intensity of a wave stands at this byte.
        const auto withoutWave = [&](std::size_t intensity) {
            auto still = settings;
            still[intensity] = still[intensity + 1] = 0;
            return callWithMemory(FilterSelectorExecute, still);
        };
        switch (GetParam()) {
            case 10004:
                return {{"nothing", nothing(1)}, {"rows", withoutWave(4)}, {"columns", withoutWave(14)}};
            case 10001:
            case 10010:
            case 10017: return {{"a copy", copy}};
            case 10011:
            case 10034: return {{"nothing", nothing(0)}};
            case 10029: return {{"two layers", twoLayers()}};
            default: return {};
        }
    }

    /// The earlier frame below the current one.
    Outcome twoLayers() {
        TestFrame layers(geometry);
        const FrameRect bounds = layers.handle()->bounds;
        brightFrame(0, layers.handle(), &bounds, nullptr);
        vpixCopy(source.handle(), layers.handle(), &bounds, &bounds, VPixCopyBlend | 187);
        return {true, 0, layers.picture()};
    }

    Random random;
    TestFrame source;
    TestFrame untouched;
};

TEST_P(AllocationFaults, LeaveTheSettingsWholeOrAlone) {
    std::vector<std::uint8_t> stored = callWithMemory(FilterSelectorInitSettings, {}).settings;
    for (std::uint8_t& byte : stored) byte = static_cast<std::uint8_t>(byte + 3);
    for (const std::int16_t selector : {FilterSelectorInitSettings, FilterSelectorSetup}) {
        const Outcome usual = callWithMemory(selector, {});
        for (const auto& settings : {std::vector<std::uint8_t>(), stored}) {
            forEachFault(selector, settings, [&](const Outcome& outcome) {
                EXPECT_EQ(outcome.result, usual.result);
                EXPECT_TRUE(outcome.settings == settings ||
                            (outcome.madeSettings && outcome.settings == usual.settings));
            });
        }
    }
}

TEST_P(AllocationFaults, OfExecuteFallBackAndLoseNothing) {
    const auto settings = callWithMemory(FilterSelectorInitSettings, {}).settings;
    const Outcome usual = callWithMemory(FilterSelectorExecute, settings);
    const auto expected = fallbacks(settings);
    auto missing = expected;
    forEachFault(FilterSelectorExecute, settings, [&](const Outcome& outcome) {
        EXPECT_EQ(outcome.settings, settings);
        if (outcome.rendersLike(usual)) return;
        const auto match = std::ranges::find_if(
            expected, [&](const auto& fallback) { return outcome.rendersLike(fallback.second); });
        ASSERT_NE(match, expected.end()) << outcome.result << " and a picture that is no fallback";
        missing.erase(match->first);
    });
    for (const auto& [name, outcome] : missing) ADD_FAILURE() << "never fell back to " << name;
    EXPECT_TRUE(usual.rendersLike(callWithMemory(FilterSelectorExecute, settings)));
}

INSTANTIATE_TEST_SUITE_P(Filters, AllocationFaults, testing::ValuesIn(filterIds()),
                         testing::PrintToStringParamName());

// Only where the source ends before the destination does Antialias need memory.
TEST(AntialiasFaults, MissingRowsAreReplacedByTheirNeighbours) {
    Random random;
    TestFrame source({.width = 20, .height = 6}, random);
    FilterUnderTest filter(10002);
    for (int failing = 1;; ++failing) {
        TestFrame destination({.width = 24, .height = 12}, random);
        filter.invocation.sourceFrame = source.handle();
        filter.invocation.destFrame = destination.handle();
        const CountedMemory memory(failing);
        EXPECT_EQ(filter.call(FilterSelectorExecute), 0);
        EXPECT_TRUE(destination.outerGuardsHold());
        if (!memory.hasFailed()) {
            EXPECT_GT(failing, 1) << "nothing was allocated";
            break;
        }
    }
}

// Without memory to keep positions in they are computed as they are needed.
TEST(LensDistortionFaults, OfKeptPositionsDoNotShow) {
    Random random;
    TestFrame source(geometry, random);
    FilterUnderTest filter(10034);
    filter.invocation.sourceFrame = source.handle();
    bool hasFailed = true;
    for (std::uint8_t failing = 1; hasFailed; ++failing) {
        // Each time another lens, which is kept from the second frame on. Nothing is filled.
        filter.setSettings(std::vector<std::uint8_t>{failing, 0, 20, 0, 30, 0, 1, 0, 2, 0, 0, 0, 0, 0, 0, 0});
        TestFrame first(geometry), second(geometry);
        filter.invocation.destFrame = first.handle();
        EXPECT_EQ(filter.call(FilterSelectorExecute), 0);
        filter.invocation.destFrame = second.handle();
        {
            const CountedMemory memory(failing);
            EXPECT_EQ(filter.call(FilterSelectorExecute), 0);
            hasFailed = memory.hasFailed();
        }
        EXPECT_TRUE(samePicture(first.picture(), second.picture())) << "allocation " << int{failing};
        EXPECT_GE(failing, hasFailed ? 1 : 3) << "too few allocations";
    }
}

// A module that runs out of memory while it registers its filters is ended before anybody else starts it.
TEST(HostFaults, LeaveNoModuleHalfInitialised) {
    const std::filesystem::path path = testedModule();
    const hosting::MetaPlugin kept(path);  // Loaded for good, so that no static part is made again.
    const auto count = [&] {
        MetaPluginCountRecord record{};
        kept.call(MetaPluginCount, &record);
        return record.count;
    };
    const std::int32_t own = count();
    ASSERT_GT(own, 0);
    int failures = 0;
    for (bool failed = true; failed;) {
        ASSERT_EQ(kept.call(MetaPluginTerminate, nullptr), MetaPluginDone);
        const int failing = failures + 1;
        int live = 0;
        {
            const CountedMemory memory(failing);
            try {
                const hosting::MetaPlugin module(path);
            } catch (const std::bad_alloc&) {
                ++failures;
            }
            failed = memory.hasFailed();
            live = memory.live();
        }
        EXPECT_EQ(failures == failing, failed) << "allocation " << failing;
        EXPECT_LE(live, 0) << "allocation " << failing;
        EXPECT_EQ(count(), 0) << "allocation " << failing;
    }
    EXPECT_GT(failures, own);
}

}  // namespace
