// SPDX-License-Identifier: MIT
// The module without its resources, in a program of its own that has others in their place.
#include "host/hosting/filter_instance.h"
#include "resources/linked_resources.h"
#include "tests/framework/loaded_module.h"
#include "tests/support/test_frame.h"

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
    }
    void TearDown() override { VRMetaPlugin(MetaPluginTerminate, nullptr); }
};

TEST_F(MissingResources, AreToldWhenAListIsAskedFor) {
    for (std::uint32_t index = 0; index < 22; ++index) {
        std::vector<std::uint8_t> buffer(64, 0xA5);
        auto record = filledRecord<MetaPluginPropertyListRecord>(0xA5);
        record.index = index;
        record.buffer = buffer.data();
        record.size = 64;
        const MetaPluginPropertyListRecord before = record;
        EXPECT_EQ(VRMetaPlugin(MetaPluginPropertyList, &record), MetaPluginNoPropertyList) << index;
        EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0) << index;
        EXPECT_EQ(buffer, std::vector<std::uint8_t>(64, 0xA5));
    }
}

TEST_F(MissingResources, LeaveTheFramesStraight) {
    MetaPluginEntryRecord record{};
    for (; record.id != 10004; ++record.index)
        ASSERT_EQ(VRMetaPlugin(MetaPluginEntryInformation, &record), MetaPluginDone);
    Random random(1);
    TestFrame source({.width = 150, .height = 90}, random), destination(source.geometry());
    const hosting::FilterInstance bend(record.entry.get());
    EXPECT_EQ(bend.render({source.handle(), destination.handle(), 30}), 0);
    EXPECT_TRUE(samePicture(source.picture(), destination.picture()));
}

}  // namespace
