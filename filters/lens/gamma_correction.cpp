// SPDX-License-Identifier: MIT
// Maps every colour channel through one of 28 power curves.
#include "framework/channel_tables.h"
#include "framework/registration_order.h"
#include "framework/settings.h"

#include <cmath>

namespace GammaCorrection {
namespace {

struct Settings {
    std::uint16_t gamma;  ///< Ten times the exponent.
};

constexpr RecordSizes recordSizes{.workRecord = 32, .settings = sizeof(Settings)};

constexpr Settings initialSettings{10};

constexpr int lastGamma = 28;

/// Entry i of curve g - 1 is 255 (i / 255)^(g / 10), truncated.
const std::array<ChannelTable, lastGamma> curves = [] {
    // The power may come out just below a whole number that it should reach. Where it should not, it stays
    // further below than this.
    constexpr double roundingError = 1e-9;
    std::array<ChannelTable, lastGamma> all{};
    for (std::size_t curve = 0; curve < all.size(); ++curve) {
        const double exponent = static_cast<double>(curve + 1) / 10;
        for (std::size_t i = 0; i < 256; ++i) {
            const double level = 255 * std::pow(static_cast<double>(i) / 255, exponent);
            all[curve][i] = static_cast<std::uint8_t>(level + roundingError);
        }
    }
    return all;
}();

RememberedServices services;

std::int32_t execute(const FilterInvocation& invocation) {
    const int gamma = std::clamp<int>(settingsOr(invocation, initialSettings).gamma, 1, lastGamma);
    const ChannelTable& curve = curves[static_cast<std::size_t>(gamma - 1)];
    applyChannelTables(services.get(), frameThroughPixKit(invocation.sourceFrame),
                       frameThroughPixKit(invocation.destFrame), curve, curve, curve);
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

void Register(VSK::PluginRegistry& registry, std::uint32_t id) { registry.Add(id, entry, 10026); }

}  // namespace GammaCorrection
