// SPDX-License-Identifier: MIT
// What every filter of the module answers alike, and that filters and property lists agree.
#include "host/heapkit/memory_handles.h"
#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/hosting/parameter_value.h"
#include "host/qrb/exceptions.h"
#include "host/vireo_host.h"
#include "host/vrm/suites.h"
#include "tests/framework/loaded_module.h"
#include "tests/support/test_frame.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>

namespace {

class FilterProtocol : public testing::Test {
protected:
    const hosting::MetaPlugin plugin{VIREO_TESTED_MODULE};
};

TEST_F(FilterProtocol, FiltersTouchNothingButTheirSettingsAtInitSettings) {
    for (const hosting::Filter& filter : plugin.filters()) {
        SCOPED_TRACE(filter.properties.name);
        // Unread bytes hold a pattern.
        auto invocation = filledRecord<FilterInvocation>(0x5A);
        invocation.settingsHandle = nullptr;
        invocation.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
        invocation.hostCallbacks = vireoHostCallbacks();
        FilterInvocation expected = invocation;
        FilterInvocation* pointer = &invocation;
        filter.entry(nullptr, FilterSelectorInitSettings, &pointer);
        expected.settingsHandle = invocation.settingsHandle;
        EXPECT_EQ(invocation.settingsHandle != nullptr, !filter.properties.parameters.empty());
        EXPECT_EQ(std::memcmp(&invocation, &expected, sizeof expected), 0);
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

TEST_F(FilterProtocol, SuitesThrowUntilTheyAreFoundAndStayFromThenOn) {
    TestFrame source({.width = 4, .height = 3}), destination({.width = 4, .height = 3});
    const hosting::FrameRequest request{source.handle(), destination.handle()};
    const auto filter = std::ranges::find(plugin.filters(), 10030U, &hosting::Filter::id);
    const hosting::FilterInstance flip(filter->entry);
    vireoHostOfferSuite(VIREO_VPIX_SUITE, 0);
    EXPECT_THAT([&] { flip.render(request); }, testing::ThrowsMessage<QRB::Exception>("Null VPix Suite"));
    vireoHostOfferSuite(VIREO_VPIX_SUITE, 1);
    EXPECT_EQ(flip.render(request), 0);
    vireoHostOfferSuite(VIREO_VPIX_SUITE, 0);
    EXPECT_EQ(flip.render(request), 0);
    vireoHostOfferSuite(VIREO_VPIX_SUITE, 1);

    const void* older = this;
    EXPECT_EQ(vrmAcquireSuite(VIREO_VPIX_CREATOR_2_SUITE, 2, &older), -1) << "there is version 3 alone";
    EXPECT_EQ(older, nullptr);
}

TEST_F(FilterProtocol, BendCopiesLineByLineWhereTheHostTakesNoMoreAtOnce) {
    constexpr Geometry geometry{.width = 45, .height = 70};
    Random random(3);
    TestFrame source(geometry, random), together(geometry), alone(geometry);
    const auto filter = std::ranges::find(plugin.filters(), 10004U, &hosting::Filter::id);
    const hosting::FilterInstance bend(filter->entry);
    vireoHostOfferSuite(VIREO_VPIX_BATCH_SUITE, 0);
    EXPECT_EQ(bend.render({source.handle(), alone.handle()}), 0);
    vireoHostOfferSuite(VIREO_VPIX_BATCH_SUITE, 1);
    EXPECT_EQ(bend.render({source.handle(), together.handle()}), 0);
    EXPECT_TRUE(samePicture(alone.picture(), together.picture()));
    EXPECT_FALSE(samePicture(alone.picture(), source.picture()));
}

}  // namespace
