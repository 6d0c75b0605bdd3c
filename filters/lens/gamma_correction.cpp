// SPDX-License-Identifier: MIT
// Maps every colour channel through one of 28 power curves.
#include "framework/channel_tables.h"
#include "framework/filter.h"
#include "framework/registration_order.h"

#include <cmath>

namespace GammaCorrection {
namespace {

struct Settings {
    std::uint16_t gamma;  ///< Ten times the exponent.
};

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

std::int32_t render(const FilterInvocation& invocation, const Settings& settings) {
    const int gamma = std::clamp<int>(settings.gamma, 1, lastGamma);
    const ChannelTable& curve = curves[static_cast<std::size_t>(gamma - 1)];
    applyChannelTables(services.get(), frameThroughPixKit(invocation.sourceFrame),
                       frameThroughPixKit(invocation.destFrame), curve, curve, curve);
    return 0;
}

constexpr FilterDeclaration<Settings> filter{
    .id = 10026,
    .initialSettings = {10},
    .workRecord = {.bytes = 32},
    .services = &services,
    .render = render,
};

}  // namespace

void Register(VSK::PluginRegistry& registry) { registerFilter<filter>(registry); }

}  // namespace GammaCorrection
