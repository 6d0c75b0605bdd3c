// SPDX-License-Identifier: MIT
// Maps red, green and blue through tables of black point, white point and gamma, each channel's composed with
// a master group.
#include "filters/color/levels.h"

#include "framework/filter.h"
#include "framework/registration_order.h"

#include <algorithm>
#include <cmath>

namespace Levels {
namespace {

RememberedServices services;

/// A channel's point seen through the master's range. The divisor 256 leaves a full-range 255 one short of
/// the master's white; old projects depend on it.
int composed(int point, int masterBlack, int masterWhite) {
    const int sum = point * (masterWhite - masterBlack) / 256 + masterBlack;
    return std::clamp<int>(static_cast<std::int16_t>(sum), 0, 255);
}

/// The low byte of a value truncated to 32 bits, which is 0 where it does not fit.
std::uint8_t truncatedToByte(double value) {
    if (!(value > -2147483649.0 && value < 2147483648.0)) return 0;
    return static_cast<std::uint8_t>(static_cast<std::int32_t>(value));
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10035,
    .workRecord = {.bytes = workRecordBytes},
    .services = &services,
    .render = render,
    .dialog = {.templateId = 2200, .procedure = dialogProcedure, .makesSettingsHandle = true},
};

}  // namespace

ChannelTable buildTable(const Channel& channel, const Channel& master) {
    const int start = composed(channel.inputBlack, master.inputBlack, master.inputWhite);
    const int end = composed(channel.inputWhite, master.inputBlack, master.inputWhite);
    const int low = composed(channel.outputBlack, master.outputBlack, master.outputWhite);
    const int high = composed(channel.outputWhite, master.outputBlack, master.outputWhite);
    const double exponent = 1.0 / (channel.gamma * master.gamma / 10000.0);

    ChannelTable table;
    std::fill(table.begin(), table.begin() + start, static_cast<std::uint8_t>(low));
    for (int i = start; i < end; ++i) {
        std::uint8_t& entry = table[static_cast<std::size_t>(i)];
        if (exponent == 1.0) {
            entry = static_cast<std::uint8_t>((i - start) * (high - low) / (end - start) + low);
        } else {
            const double position = static_cast<double>(i - start) / (end - start);
            entry = truncatedToByte(std::pow(position, exponent) * (high - low) + low);
        }
    }
    // Where the points are crossed, the upper end wins.
    std::fill(table.begin() + end, table.end(), static_cast<std::uint8_t>(high));
    return table;
}

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    const ChannelTable red = buildTable(settings.red, settings.master);
    const ChannelTable green =
        settings.green == settings.red ? red : buildTable(settings.green, settings.master);
    const ChannelTable blue =
        settings.blue == settings.red ? red : buildTable(settings.blue, settings.master);
    applyChannelTables(services.get(), frameThroughPixKit(invocation.sourceFrame),
                       frameThroughPixKit(invocation.destFrame), red, green, blue);
    return 0;
}

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace Levels
