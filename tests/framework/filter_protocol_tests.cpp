// SPDX-License-Identifier: MIT
// What every filter of the module answers alike, and that filters and property lists agree.
#include "host/heapkit/memory_handles.h"
#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/pixkit/pixkit.h"
#include "host/qrb/exceptions.h"
#include "host/vireo_host.h"
#include "host/vrm/suites.h"
#include "tests/framework/loaded_module.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace {

std::int64_t storedValue(std::span<const std::uint8_t> settings, const hosting::Parameter& parameter) {
    std::int64_t value = 0;
    std::memcpy(&value, settings.data() + parameter.offset, static_cast<std::size_t>(parameter.size));
    const int shift = 64 - 8 * parameter.size;
    return value << shift >> shift;
}

class FilterProtocol : public testing::Test {
protected:
    FilterProtocol() : plugin(VIREO_TESTED_MODULE) {}

    FilterEntryProc entryOf(std::uint32_t id) const {
        return std::ranges::find(plugin.filters(), id, &hosting::Filter::id)->entry;
    }

    const hosting::MetaPlugin plugin;
};

/// A host's record whose unread bytes hold a pattern that filters must leave alone.
FilterInvocation patternedInvocation() {
    auto invocation = filledRecord<FilterInvocation>(0x5A);
    invocation.settingsHandle = nullptr;
    invocation.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
    invocation.hostCallbacks = vireoHostCallbacks();
    return invocation;
}

TEST_F(FilterProtocol, FiltersAnswerUnknownSelectorsWithNothing) {
    for (const hosting::Filter& filter : plugin.filters()) {
        for (const std::int16_t selector : {-32768, -1, 2, 3, 4, 7, 9, 10, 256, 32767}) {
            FilterInvocation invocation = patternedInvocation();
            const FilterInvocation before = invocation;
            FilterInvocation* pointer = &invocation;
            EXPECT_EQ(filter.entry(nullptr, selector, &pointer), 0)
                << filter.properties.name << ", selector " << selector;
            EXPECT_EQ(std::memcmp(&invocation, &before, sizeof before), 0) << filter.properties.name;
        }
    }
}

TEST_F(FilterProtocol, FiltersTouchNothingButTheirSettingsAtInitSettings) {
    for (const hosting::Filter& filter : plugin.filters()) {
        SCOPED_TRACE(filter.properties.name);
        FilterInvocation invocation = patternedInvocation();
        FilterInvocation expected = invocation;
        FilterInvocation* pointer = &invocation;
        const std::int32_t result = filter.entry(nullptr, FilterSelectorInitSettings, &pointer);
        const bool hasSettings = !filter.properties.parameters.empty();
        EXPECT_EQ(result, hasSettings ? 1 : 0);
        EXPECT_EQ(invocation.settingsHandle != nullptr, hasSettings);
        expected.settingsHandle = invocation.settingsHandle;
        EXPECT_EQ(std::memcmp(&invocation, &expected, sizeof expected), 0);

        // A second call keeps the handle.
        EXPECT_EQ(filter.entry(nullptr, FilterSelectorInitSettings, &pointer), result);
        EXPECT_EQ(invocation.settingsHandle.get(), expected.settingsHandle.get());
        HeapKit::disposeHandle(invocation.settingsHandle);
    }
}

TEST_F(FilterProtocol, FreshSettingsHoldEveryParameterWithinItsRange) {
    for (const hosting::Filter& filter : plugin.filters()) {
        SCOPED_TRACE(filter.properties.name);
        const hosting::FilterInstance instance(filter.entry);
        const std::span<const std::uint8_t> settings = instance.settings();
        ASSERT_GE(settings.size(), filter.properties.recordSize());
        for (const hosting::Parameter& parameter : filter.properties.parameters) {
            const std::int64_t value = storedValue(settings, parameter);
            if (parameter.kind == hosting::ParameterKind::Number) {
                EXPECT_GE(static_cast<double>(value), parameter.minimum) << parameter.name;
                EXPECT_LE(static_cast<double>(value), parameter.maximum) << parameter.name;
            }
            if (parameter.kind == hosting::ParameterKind::Boolean) {
                EXPECT_TRUE(value == 0 || value == 1) << parameter.name;
            }
        }
    }
}

TEST_F(FilterProtocol, FormatsThatFiltersOfferAreFourCharacters) {
    for (const hosting::Filter& filter : plugin.filters()) {
        SCOPED_TRACE(filter.properties.name);
        const hosting::FilterInstance instance(filter.entry);
        const std::vector<std::uint32_t> formats = instance.pixelFormats();
        EXPECT_LE(formats.size(), 10u);
        for (const std::uint32_t format : formats) {
            for (int shift = 0; shift < 32; shift += 8)
                EXPECT_TRUE(std::isalpha(static_cast<int>(format >> shift & 0xFF)));
        }
    }
}

std::int32_t withdrawSuite(std::uint32_t, FrameBuffer*, const FrameRect*, void*) {
    vireoHostOfferSuite(VIREO_VPIX_SUITE, 0);
    return 0;
}

TEST_F(FilterProtocol, SuitesThrowUntilTheyAreFoundAndStayFromThenOn) {
    const FrameRect bounds{0, 0, 4, 3};
    FrameBuffer* const source = vpixNew(&bounds);
    FrameBuffer* const destination = vpixNew(&bounds);
    const hosting::FilterInstance flip(entryOf(10030));
    const hosting::FilterInstance ghosting(entryOf(10029));

    vireoHostOfferSuite(VIREO_VPIX_SUITE, 0);
    try {
        flip.render({source, destination});
        ADD_FAILURE() << "rendered without the suite";
    } catch (const QRB::Exception& exception) {
        EXPECT_STREQ(exception.what(), "Null VPix Suite");
    }
    vireoHostOfferSuite(VIREO_VPIX_SUITE, 1);
    EXPECT_EQ(flip.render({source, destination}), 0);

    // Withdrawn in the middle of a call.
    hosting::FrameRequest request{source, destination};
    request.getFrame = withdrawSuite;
    EXPECT_EQ(ghosting.render(request), 0);
    EXPECT_EQ(flip.render({source, destination}), 0);
    vireoHostOfferSuite(VIREO_VPIX_SUITE, 1);
    vpixDispose(source);
    vpixDispose(destination);
}

}  // namespace
