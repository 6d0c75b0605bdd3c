// SPDX-License-Identifier: MIT
// Scales red, green and blue by three factors of which 255 means unchanged.
#include "framework/channel_tables.h"
#include "framework/registration_order.h"
#include "framework/settings.h"

namespace ColorBalance {
namespace {

struct Settings {
    std::uint16_t red;
    std::uint16_t green;
    std::uint16_t blue;
};

constexpr RecordSizes recordSizes{.workRecord = 40, .settings = sizeof(Settings)};

constexpr Settings initialSettings{255, 255, 255};

RememberedServices services;

ChannelTable scalingTable(int factor) {
    ChannelTable table;
    int sum = 0;
    for (std::uint8_t& entry : table) {
        entry = static_cast<std::uint8_t>(std::min(sum / 255, 255));
        sum += factor;
    }
    return table;
}

std::int32_t execute(const FilterInvocation& invocation) {
    const Settings settings = settingsOr(invocation, initialSettings);
    applyChannelTables(services.get(), frameThroughPixKit(invocation.sourceFrame),
                       frameThroughPixKit(invocation.destFrame), scalingTable(settings.red),
                       scalingTable(settings.green), scalingTable(settings.blue));
    return 0;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    services.remember(**invocation);
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorInitSettings: return initSettings(**invocation, recordSizes, initialSettings);
        case FilterSelectorGetFilterFlags: return filterFlags;
        default: return 0;
    }
}

}  // namespace

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10013); }

}  // namespace ColorBalance
