// SPDX-License-Identifier: MIT
// Maps red, green and blue through tables of black point, white point and gamma, each channel's composed with
// a master group.
#include "filters/color/levels.h"

#include "filters/color/levels_dialog.h"
#include "framework/dialog_launcher.h"
#include "framework/registration_order.h"
#include "framework/settings.h"

#include <algorithm>
#include <cmath>

namespace Levels {
namespace {

constexpr std::uint16_t dialogId = 2200;

constexpr RecordSizes recordSizes{.workRecord = workRecordSize, .settings = sizeof(Settings)};

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

std::int32_t setup(FilterInvocation** handle) {
    FilterInvocation& invocation = **handle;
    WorkRecord workRecord(invocation, recordSizes.workRecord);
    if (!workRecord) return static_cast<std::int32_t>(noDialog);
    // Settings that did not exist are made here and stay zero until the dialog ends with OK.
    const WorkRecordHead head{settingsOr(invocation, Settings{}), handle};
    ensureSettingsHandle(invocation, recordSizes.settings);
    std::memcpy(*workRecord.get(), &head, sizeof head);
    return static_cast<std::int32_t>(runSettingsDialog(invocation, dialogId, dialogProcedure, workRecord));
}

std::int32_t execute(const FilterInvocation& invocation) {
    render(invocation, settingsOr(invocation, Settings{}));
    return 0;
}

std::int32_t entry(void*, std::int16_t selector, FilterInvocation** invocation) {
    services.remember(**invocation);
    switch (selector) {
        case FilterSelectorExecute: return execute(**invocation);
        case FilterSelectorSetup: return setup(invocation);
        case FilterSelectorInitSettings: return initSettings(**invocation, recordSizes, Settings{});
        default: return 0;
    }
}

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

void render(const FilterInvocation& invocation, const Settings& settings) {
    const ChannelTable red = buildTable(settings.red, settings.master);
    const ChannelTable green =
        settings.green == settings.red ? red : buildTable(settings.green, settings.master);
    const ChannelTable blue =
        settings.blue == settings.red ? red : buildTable(settings.blue, settings.master);
    applyChannelTables(services.get(), frameThroughPixKit(invocation.sourceFrame),
                       frameThroughPixKit(invocation.destFrame), red, green, blue);
}

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10035); }

}  // namespace Levels
