// SPDX-License-Identifier: MIT
#include "tests/support/filter_under_test.h"

#include "host/heapkit/memory_handles.h"
#include "host/vireo_host.h"
#if defined(_WIN32)
#include "host/win32.h"
#endif

#include <stdexcept>

namespace {

const TimeBase timeBase{{}, 1};

FilterEntryProc entryOf(std::uint32_t id) {
    for (const hosting::Filter& filter : testedFilters()) {
        if (filter.id == id) return filter.entry;
    }
    throw std::out_of_range("no filter " + std::to_string(id));
}

}  // namespace

std::filesystem::path testedModule() {
#if defined(_WIN32)
    wchar_t program[MAX_PATH];
    GetModuleFileNameW(nullptr, program, MAX_PATH);
    const std::filesystem::path path = program;
#else
    const auto path = std::filesystem::read_symlink("/proc/self/exe");
#endif
    return path.parent_path() / "VireoFiltersMetaPlugin.vrmp";
}

const std::vector<hosting::Filter>& testedFilters() {
    static const hosting::MetaPlugin loaded(testedModule());
    return loaded.filters();
}

std::vector<std::uint32_t> filterIds() {
    std::vector<std::uint32_t> ids;
    for (const hosting::Filter& filter : testedFilters()) ids.push_back(filter.id);
    return ids;
}

FilterUnderTest::FilterUnderTest(std::uint32_t id) : entry_(entryOf(id)) {
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
    vireoHostSetPixelFormat(source.handle(), pixelFormat);
    EXPECT_EQ(call(FilterSelectorExecute), 0);
    vireoHostSetPixelFormat(source.handle(), PixKit::formatBgra);
}

Picture FilterUnderTest::rendered(TestFrame& source) {
    Random random(static_cast<Random::result_type>(source.geometry().width));
    TestFrame destination(source.geometry(), random);
    render(source, destination);
    EXPECT_TRUE(destination.guardsHold());
    return destination.picture();
}
