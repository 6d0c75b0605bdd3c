// SPDX-License-Identifier: MIT
#include "tests/filters/support/filter_under_test.h"

#include "framework/registration_order.h"
#include "host/heapkit/memory_handles.h"
#include "host/vireo_host.h"

#include <map>

namespace {

const TimeBase timeBase{{}, 1};

class EntryCollector final : public VSK::PluginRegistry {
public:
    void Add(std::uint32_t id, FilterEntryProc entry, std::uint16_t) override { entries.emplace(id, entry); }

    std::map<std::uint32_t, FilterEntryProc> entries;
};

}  // namespace

FilterEntryProc filterEntry(std::uint32_t id) {
    static const auto entries = [] {
        EntryCollector collector;
#define VIREO_REGISTER_FILTER(filterId, filter) filter::Register(collector, filterId);
        VIREO_FILTERS_FOR_ALL(VIREO_REGISTER_FILTER)
        VIREO_FILTERS_FOR_FULL_APPLICATIONS(VIREO_REGISTER_FILTER)
#undef VIREO_REGISTER_FILTER
        return collector.entries;
    }();
    return entries.at(id);
}

FilterUnderTest::FilterUnderTest(std::uint32_t id) : entry_(filterEntry(id)) {
    invocation.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
    invocation.hostCallbacks = vireoHostCallbacks();
    invocation.timeBase = &timeBase;
}

FilterUnderTest::~FilterUnderTest() { dropSettings(); }

void FilterUnderTest::setSettings(std::span<const std::uint8_t> bytes) {
    dropSettings();
    invocation.settingsHandle = HeapKit::newHandle(bytes.size());
    std::memcpy(*invocation.settingsHandle, bytes.data(), bytes.size());
}

void FilterUnderTest::dropSettings() {
    HeapKit::disposeHandle(invocation.settingsHandle);
    invocation.settingsHandle = nullptr;
}

std::vector<std::uint8_t> FilterUnderTest::settings() const {
    if (invocation.settingsHandle == nullptr) return {};
    const auto* bytes = static_cast<const std::uint8_t*>(*invocation.settingsHandle);
    return {bytes, bytes + HeapKit::handleSize(invocation.settingsHandle)};
}

std::int32_t FilterUnderTest::call(std::int16_t selector) {
    FilterInvocation* pointer = &invocation;
    return entry_(nullptr, selector, &pointer);
}

void FilterUnderTest::render(TestFrame& source, TestFrame& destination) {
    invocation.sourceFrame = source.handle();
    invocation.destFrame = destination.handle();
    EXPECT_EQ(call(FilterSelectorExecute), 0);
}

Picture FilterUnderTest::rendered(TestFrame& source) {
    Random random(static_cast<Random::result_type>(source.geometry().width));
    TestFrame destination(source.geometry(), random);
    render(source, destination);
    EXPECT_TRUE(destination.guardsHold());
    return destination.picture();
}

std::vector<mtkcore::InstructionSet> runnableInstructionSets() {
    std::vector<mtkcore::InstructionSet> sets;
    for (const auto set : mtkcore::allInstructionSets) {
        if (set <= mtkcore::processorInstructionSet()) sets.push_back(set);
    }
    return sets;
}
