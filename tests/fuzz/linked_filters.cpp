// SPDX-License-Identifier: MIT
#include "tests/fuzz/linked_filters.h"

#include "tests/fuzz/require.h"

extern "C" std::int32_t VRMetaPlugin(std::int32_t selector, void* record);

namespace {

void call(std::int32_t selector, void* record) { REQUIRE(VRMetaPlugin(selector, record) == MetaPluginDone); }

hosting::PropertyList propertyList(std::uint32_t index) {
    MetaPluginPropertyListRecord record{};
    record.index = index;
    call(MetaPluginPropertyList, &record);
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(record.size));
    record.buffer = bytes.data();
    call(MetaPluginPropertyList, &record);
    return hosting::readPropertyList(bytes);
}

}  // namespace

const std::vector<hosting::Filter>& linkedFilters() {
    static const std::vector<hosting::Filter> all = [] {
        std::vector<hosting::Filter> filters;
        MetaPluginInitialiseRecord initialise{0x0409};
        call(MetaPluginInitialise, &initialise);
        MetaPluginCountRecord count{};
        call(MetaPluginCount, &count);
        for (std::uint32_t i = 0; i < static_cast<std::uint32_t>(count.count); ++i) {
            MetaPluginEntryRecord entry{};
            entry.index = i;
            call(MetaPluginEntryInformation, &entry);
            filters.push_back({entry.id, entry.entry, propertyList(i)});
        }
        return filters;
    }();
    return all;
}
