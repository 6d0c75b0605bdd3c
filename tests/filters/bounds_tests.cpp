// SPDX-License-Identifier: MIT
// No filter writes outside the rows of the destination or loops without end, whatever the frames and settings
// are. The address sanitizer watches what is read.
#include "host/hosting/filter_traits.h"
#include "tests/filters/plain_filter.h"

namespace {

constexpr std::uint32_t bendId = 10004;

constexpr Geometry sources[] = {{.width = 30, .height = 20, .left = 5, .top = 5},
                                {.width = 20, .height = 10, .padding = 3},
                                {.width = 7, .height = 30},
                                {.width = 90, .height = 90},
                                {.width = 4, .height = 2},
                                {.width = 40, .height = 3, .negativeRowBytes = true},
                                {.width = 0, .height = 5},
                                {.width = 5, .height = 0}};

class Bounds : public testing::TestWithParam<std::uint32_t> {
protected:
    Bounds() {
        filter.call(FilterSelectorInitSettings);
        initial = filter.settings();
    }

    /// The initial settings, random ones or extreme ones; any field, at any time.
    void choose() {
        constexpr std::uint8_t extremes[] = {0x00, 0x01, 0x7F, 0x80, 0xFF};
        std::vector<std::uint8_t> settings = initial;
        for (std::uint8_t& byte : settings) {
            const auto way = random() % 3;
            if (way == 0) byte = oneOf(extremes, random);
            if (way == 1) byte = static_cast<std::uint8_t>(random());
        }
        if (!settings.empty() && random() % 4 != 0) filter.setSettings(settings);
        filter.invocation.fieldFlags = static_cast<std::uint16_t>(random());
        filter.invocation.frameTime = static_cast<std::uint32_t>(random());
        filter.invocation.clipDuration = static_cast<std::uint32_t>(random() % 3 == 0 ? 0 : random());
    }

    void expectHold(TestFrame& source, TestFrame& destination) {
        choose();
        filter.invocation.sourceFrame = source.handle();
        filter.invocation.destFrame = destination.handle();
        const FrameRect bounds = source.handle()->bounds;
        const bool isEmpty = bounds.right <= bounds.left || bounds.bottom <= bounds.top;
        const auto settings = filter.settings();
        // Bend copies the source first, of which there is none.
        EXPECT_EQ(filter.call(FilterSelectorExecute), isEmpty && GetParam() == bendId ? 1 : 0);
        ASSERT_TRUE(destination.outerGuardsHold())
            << "from " << source.geometry() << ", settings " << testing::PrintToString(settings);
        ASSERT_EQ(filter.settings(), settings);
    }

    FilterUnderTest filter{GetParam()};
    std::vector<std::uint8_t> initial;
    Random random{GetParam()};
};

TEST_P(Bounds, HoldFramesOfDifferentSizes) {
    std::vector<Geometry> destinations = awkwardGeometries();
    destinations.insert(destinations.end(), std::begin(sources), std::end(sources));
    for (const Geometry& from : sources) {
        for (const Geometry& to : destinations) {
            TestFrame source(from, random), destination(to);
            expectHold(source, destination);
            if (HasFatalFailure()) return;
        }
    }
}

TEST_P(Bounds, HoldInvertedFrames) {
    for (const FrameRect bounds : {FrameRect{10, 10, -10, -10}, FrameRect{0, 0, 0, 30},
                                   FrameRect{0, 0, 90, 0}, FrameRect{0, 0, 30, -20}}) {
        TestFrame source({.width = 90, .height = 30}, random), destination({.width = 90, .height = 30});
        source.handle()->bounds = bounds;
        expectHold(source, destination);
        const bool isLens = GetParam() == 10011 || GetParam() == 10034;
        EXPECT_TRUE(!isLens || samePicture(Picture{90, 30}, destination.picture()))
            << "a lens has no picture";
    }
}

// Filters that walk with one frame's row bytes take any.
TEST(BoundsOfRowBytes, HoldAnyValue) {
    for (const std::uint32_t id : {10006u, 10016u, 10022u, 10049u}) {
        for (const std::int32_t rowBytes : {0, 3, -160, 65536 + 160, 1 << 30, INT32_MIN, INT32_MAX}) {
            Random random(id);
            FilterUnderTest filter(id);
            TestFrame source({.width = 40, .height = 30}, random), destination({.width = 40, .height = 30});
            TestFrame& odd = id == 10006 ? destination : source;
            odd.handle()->rowBytes = rowBytes;
            if (rowBytes != 0) destination.handle()->bounds.bottom = 1;
            filter.render(source, destination);
            EXPECT_TRUE(destination.outerGuardsHold()) << id << ", " << rowBytes;
        }
    }
}

TEST(BoundsOfBend, HoldWhereCoordinatesEnd) {
    Random random(46);
    TestFrame source({.width = 40, .height = 30}, random), destination({.width = 25, .height = 18}, random);
    FilterUnderTest filter(bendId);
    for (const auto& [left, top] : {std::pair{INT32_MAX - 40, 0}, {INT32_MIN, INT32_MIN}}) {
        source.handle()->bounds = {left, top, left + 40, top + 30};
        destination.handle()->bounds = {left, top, left + 25, top + 18};
        filter.render(source, destination);
        EXPECT_TRUE(destination.guardsHold());
    }
}

INSTANTIATE_TEST_SUITE_P(Filters, Bounds, testing::ValuesIn(filterIds()), testing::PrintToStringParamName());

}  // namespace
