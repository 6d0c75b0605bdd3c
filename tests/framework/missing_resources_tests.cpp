// SPDX-License-Identifier: MIT
// The module without its resources, in a program of its own that has others in their place.
#include "host/hosting/filter_instance.h"
#include "host/vireo_host.h"
#include "resources/linked_resources.h"
#include "tests/framework/loaded_module.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

constexpr std::uint8_t bytes[100] = {};

}  // namespace

// One byte of a property list's two of header, and a wave that ends early.
const QRB::LinkedResource linkedResources[] = {
    {u"PiPL", 10001, bytes, 1}, {u"LOOKUP", 4000, bytes, sizeof bytes}, {nullptr, 0, nullptr, 0}};

extern "C" std::int32_t VRMetaPlugin(std::int32_t selector, void* record);

namespace {

class MissingResources : public testing::Test {
protected:
    void SetUp() override {
        MetaPluginInitialiseRecord record{0x0409};
        ASSERT_EQ(VRMetaPlugin(MetaPluginInitialise, &record), MetaPluginDone);
        MetaPluginCountRecord count{};
        ASSERT_EQ(VRMetaPlugin(MetaPluginCount, &count), MetaPluginDone);
        filterCount = static_cast<std::uint32_t>(count.count);
        ASSERT_GT(filterCount, 0u);
    }
    void TearDown() override { VRMetaPlugin(MetaPluginTerminate, nullptr); }

    FilterEntryProc entry(std::uint32_t id) const {
        for (std::uint32_t index = 0; index < filterCount; ++index) {
            MetaPluginEntryRecord record{};
            record.index = index;
            VRMetaPlugin(MetaPluginEntryInformation, &record);
            if (record.id == id) return record.entry;
        }
        return nullptr;
    }

    std::uint32_t filterCount = 0;
};

TEST_F(MissingResources, AreToldWhenAListIsAskedFor) {
    for (std::uint32_t index = 0; index < filterCount; ++index) {
        std::uint8_t buffer[64];
        std::memset(buffer, 0xA5, sizeof buffer);
        auto record = filledRecord<MetaPluginPropertyListRecord>(0xA5);
        record.index = index;
        record.buffer = buffer;
        record.size = sizeof buffer;
        const MetaPluginPropertyListRecord before = record;
        EXPECT_EQ(VRMetaPlugin(MetaPluginPropertyList, &record), MetaPluginNoPropertyList) << index;
        EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0) << index;
        for (const std::uint8_t byte : buffer) ASSERT_EQ(byte, 0xA5);
    }
}

TEST_F(MissingResources, LeaveTheFramesStraight) {
    const FrameRect bounds{0, 0, 150, 90};
    FrameBuffer* const source = vpixNew(&bounds);
    FrameBuffer* const destination = vpixNew(&bounds);
    for (std::int32_t x = 0; x < bounds.right; ++x) {
        const FrameRect column{x, x / 2, x + 1, bounds.bottom};
        vpixFillRect(source, &column, 0xFF000000 | static_cast<std::uint32_t>(x * 77));
    }
    const hosting::FilterInstance bend(entry(10004));
    EXPECT_EQ(bend.render({source, destination, 30}), 0);
    for (std::int32_t y = 0; y < bounds.bottom; ++y) {
        for (std::int32_t x = 0; x < bounds.right; ++x) {
            ASSERT_EQ(vpixGetPixel(source, x, y), vpixGetPixel(destination, x, y)) << x << ", " << y;
        }
    }
    vpixDispose(source);
    vpixDispose(destination);
}

}  // namespace
