// SPDX-License-Identifier: MIT
// Scales red, green and blue by three factors of which 255 means unchanged.
#include "framework/channel_tables.h"
#include "framework/filter.h"
#include "framework/registration_order.h"

namespace ColorBalance {
namespace {

struct Settings {
    std::uint16_t red;
    std::uint16_t green;
    std::uint16_t blue;
};

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

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    applyChannelTables(services.get(), frameThroughPixKit(invocation.sourceFrame),
                       frameThroughPixKit(invocation.destFrame), scalingTable(settings.red),
                       scalingTable(settings.green), scalingTable(settings.blue));
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10013,
    .initialSettings = {255, 255, 255},
    .workRecord = {.bytes = 40},
    .services = &services,
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace ColorBalance
