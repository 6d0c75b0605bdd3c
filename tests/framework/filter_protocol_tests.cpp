// SPDX-License-Identifier: MIT
// What every filter of the module answers alike, and that filters and property lists agree.
#include "host/heapkit/memory_handles.h"
#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/hosting/parameter_value.h"
#include "host/pixkit/pixkit.h"
#include "host/qrb/exceptions.h"
#include "host/vireo_host.h"
#include "host/vrm/suites.h"
#include "tests/framework/loaded_module.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>

namespace {

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
        const hosting::FilterInstance instance(filter.entry);
        ASSERT_GE(instance.settings().size(), filter.properties.recordSize());
        for (const hosting::Parameter& parameter : filter.properties.parameters) {
            const hosting::ValueRange range = hosting::valueRange(parameter);
            const std::int64_t value = hosting::readValue(parameter, instance.settings());
            EXPECT_TRUE(value >= range.minimum && value <= range.maximum)
                << filter.properties.name << ", " << parameter.name;
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
