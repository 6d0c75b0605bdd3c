// SPDX-License-Identifier: MIT
// The module's one exported function, called as hosts may call it.
#include "framework/registry.h"
#include "host/vireo_host.h"
#include "tests/framework/loaded_module.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <set>
#include <stdexcept>

namespace {

using Ids = std::vector<std::uint32_t>;
using Limits = std::numeric_limits<std::int32_t>;

constexpr std::uint8_t untouched = 0xA5;

/// The order in which hosts count the filters; the last three are for applications of type 5 and 8.
const Ids fixedOrder{10001, 10002, 10004, 10006, 10011, 10013, 10015, 10016, 10020, 10022, 10026,
                     10029, 10030, 10031, 10034, 10042, 10049, 10052, 10053, 10017, 10035, 10010};

/// The module initialised for an application that gets everything, with 5 as the type.
class EntryPoint : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(module.count(), 0);
        ASSERT_EQ(module.initialise(), MetaPluginDone);
        ASSERT_GT(module.count(), 0);
    }
    void TearDown() override { vireoHostSetApplicationType(5); }

    std::int32_t listSize(std::uint32_t index) const {
        MetaPluginPropertyListRecord record{};
        record.index = index;
        return module.call(MetaPluginPropertyList, &record) == MetaPluginDone ? record.size : -1;
    }

    /// Hands over a copy of the record at an odd address that ends where its memory ends, so that the address
    /// sanitizer sees a byte too many read or written.
    template <class Record>
    std::int32_t callUnaligned(std::int32_t selector, Record& record) const {
        std::vector<std::uint8_t> bytes(1 + sizeof record);
        std::memcpy(bytes.data() + 1, &record, sizeof record);
        const std::int32_t result = module.call(selector, bytes.data() + 1);
        std::memcpy(&record, bytes.data() + 1, sizeof record);
        return result;
    }

    const LoadedModule module;
};

TEST_F(EntryPoint, RegistersTheFiltersInTheFixedOrderAndThreeForFullApplicationsOnly) {
    for (const std::int32_t type : {Limits::min(), -5, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 13, Limits::max()}) {
        for (const std::uint16_t language : {0x0000, 0x0411, 0xFFFF}) {
            module.terminate();
            ASSERT_EQ(module.initialise(type, language), MetaPluginDone);
            const bool full = type == 5 || type == 8;
            const Ids expected(fixedOrder.begin(), fixedOrder.end() - (full ? 0 : 3));
            EXPECT_EQ(module.ids(), expected) << "type " << type;
        }
    }
}

TEST_F(EntryPoint, AnswersOtherSelectorsAndMissingRecords) {
    auto record = filledRecord<MetaPluginPropertyListRecord>(untouched);
    const auto before = record;
    for (const std::int32_t selector : {Limits::min(), -1, 0, 6, 7, 99, 65537, Limits::max()}) {
        EXPECT_EQ(module.call(selector, &record), MetaPluginUnknownSelector) << selector;
        EXPECT_EQ(module.call(selector, nullptr), MetaPluginUnknownSelector) << selector;
    }
    EXPECT_EQ(std::memcmp(&record, &before, sizeof record), 0);
    for (const std::int32_t selector :
         {MetaPluginInitialise, MetaPluginCount, MetaPluginEntryInformation, MetaPluginPropertyList}) {
        EXPECT_EQ(module.call(selector, nullptr), MetaPluginBadArgument) << selector;
    }
    EXPECT_EQ(module.ids(), fixedOrder);
}

TEST_F(EntryPoint, DescribesEachFilterAsAVideoFilterWithAnEntryOfItsOwn) {
    std::set<FilterEntryProc> procs{nullptr};
    for (const MetaPluginEntryRecord& entry : module.entries()) {
        EXPECT_EQ(entry.kind, videoFilterKind);
        EXPECT_TRUE(procs.insert(entry.entry.get()).second) << entry.id;
    }
}

TEST_F(EntryPoint, LeavesTheRecordAloneForAnIndexPastTheEnd) {
    const auto count = static_cast<std::uint32_t>(module.count());
    for (const std::uint32_t index : {count, count + 1, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu}) {
        auto entry = filledRecord<MetaPluginEntryRecord>(untouched);
        entry.index = index;
        const MetaPluginEntryRecord before = entry;
        EXPECT_EQ(module.call(MetaPluginEntryInformation, &entry), MetaPluginBadArgument) << index;
        EXPECT_EQ(std::memcmp(&entry, &before, sizeof entry), 0);

        MetaPluginPropertyListRecord list{};
        list.index = index;
        list.size = 4711;
        EXPECT_EQ(module.call(MetaPluginPropertyList, &list), MetaPluginBadArgument) << index;
        EXPECT_EQ(list.size, 4711);
    }
}

TEST_F(EntryPoint, TakesRecordsAtAnyAddress) {
    MetaPluginCountRecord count{-1};
    EXPECT_EQ(callUnaligned(MetaPluginCount, count), MetaPluginDone);
    EXPECT_EQ(count.count, module.count());

    MetaPluginEntryRecord entry{};
    EXPECT_EQ(callUnaligned(MetaPluginEntryInformation, entry), MetaPluginDone);
    EXPECT_EQ(entry.id, fixedOrder.front());

    std::vector<std::uint8_t> buffer(static_cast<std::size_t>(listSize(0)) + 1);
    MetaPluginPropertyListRecord list{};
    list.buffer = buffer.data() + 1;
    list.size = listSize(0);
    EXPECT_EQ(callUnaligned(MetaPluginPropertyList, list), MetaPluginDone);

    MetaPluginInitialiseRecord initialise{0x0409};
    EXPECT_EQ(callUnaligned(MetaPluginInitialise, initialise), MetaPluginDone);
}

TEST_F(EntryPoint, HandsOutPropertyListsIntoBuffersThatAreLargeEnough) {
    for (std::uint32_t index = 0; index < static_cast<std::uint32_t>(module.count()); ++index) {
        const std::int32_t size = listSize(index);
        ASSERT_GT(size, 0);
        std::vector<std::uint8_t> buffer(static_cast<std::size_t>(size) + 8, untouched);
        const std::vector<std::uint8_t> before = buffer;
        MetaPluginPropertyListRecord record{};
        record.index = index;
        record.buffer = buffer.data();
        for (const std::int32_t tooSmall : {size - 1, 1, 0, -1, Limits::min()}) {
            record.size = tooSmall;
            EXPECT_EQ(module.call(MetaPluginPropertyList, &record), MetaPluginBadArgument);
            EXPECT_EQ(record.size, tooSmall);
        }
        EXPECT_EQ(buffer, before);
        for (const std::int32_t enough : {size + 8, size}) {
            record.size = enough;
            EXPECT_EQ(module.call(MetaPluginPropertyList, &record), MetaPluginDone);
            EXPECT_EQ(record.size, size);
            EXPECT_TRUE(std::equal(buffer.end() - 8, buffer.end(), before.begin()));
        }
    }
}

TEST_F(EntryPoint, RegistersEverythingAgainWhenInitialisedAgain) {
    Ids twice = fixedOrder;
    twice.insert(twice.end(), fixedOrder.begin(), fixedOrder.end());
    EXPECT_EQ(module.initialise(), MetaPluginDone);
    EXPECT_EQ(module.ids(), twice);
    EXPECT_EQ(listSize(static_cast<std::uint32_t>(fixedOrder.size())), listSize(0));
}

TEST_F(EntryPoint, AnswersAfterTerminateAndStartsAfresh) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(module.terminate(), MetaPluginDone);
        EXPECT_EQ(module.terminate(), MetaPluginDone);
        EXPECT_EQ(module.count(), 0);
        EXPECT_TRUE(module.entries().empty());
        EXPECT_EQ(listSize(0), -1);
        EXPECT_EQ(module.initialise(), MetaPluginDone);
        EXPECT_EQ(module.ids(), fixedOrder);
    }
}

TEST(ModuleLibrary, LoadsAndUnloadsAnyNumberOfTimes) {
    for (int i = 0; i < 30; ++i) {
        {
            const LoadedModule module;
            EXPECT_EQ(module.count(), 0) << "nothing stays from the last time";
            EXPECT_EQ(module.initialise(), MetaPluginDone);
            if (i % 2 == 0) module.terminate();
            EXPECT_TRUE(LoadedModule::isLoaded());
        }
        ASSERT_FALSE(LoadedModule::isLoaded());
    }
}

TEST(Registry, GrowsByHalf) {
    constexpr std::size_t limit = 768614336404564650;
    EXPECT_EQ(grownCapacity(4, 100), 100U);
    EXPECT_EQ(grownCapacity(limit / 3 * 2, limit / 3 * 2 + 1), limit);
    EXPECT_EQ(grownCapacity(limit / 3 * 2 + 3, limit / 3 * 2 + 4), limit / 3 * 2 + 4);
    EXPECT_THAT([] { grownCapacity(0, limit + 1); },
                testing::ThrowsMessage<std::length_error>("vector<T> too long"));
    std::vector<FilterEntryRecord> entries;
    std::set<std::size_t> capacities;
    for (std::uint32_t id = 0; id < 22; ++id) {
        appendEntry(entries, {videoFilterKind, id, nullptr, static_cast<std::uint16_t>(id)});
        capacities.insert(entries.capacity());
        EXPECT_EQ(entries.back().id, id);
    }
    EXPECT_THAT(capacities, testing::ElementsAre(1, 2, 3, 4, 6, 9, 13, 19, 28));
}

}  // namespace
