// SPDX-License-Identifier: MIT
#ifndef VIREO_FRAMEWORK_CHANNEL_TABLES_H
#define VIREO_FRAMEWORK_CHANNEL_TABLES_H

#include "framework/frame_view.h"
#include "framework/utility_services.h"

#include <array>
#include <cstdint>
#include <limits>

using ChannelTable = std::array<std::uint8_t, 256>;

/// Sends the frame through the host's service with the source's geometry for both frames. Does nothing where
/// the host has no such service.
inline void applyChannelTables(const UtilityServices* services, const FrameView& source,
                               const FrameView& destination, const ChannelTable& red,
                               const ChannelTable& green, const ChannelTable& blue) {
    if (services == nullptr || services->applyChannelTables.get() == nullptr) return;
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    forEachBlock(source, destination, {source.rowBytes, source.rowBytes, source.width(), source.height()},
                 [&](const std::uint8_t* from, std::uint8_t* to, std::int64_t width, std::int64_t rows) {
                     services->applyChannelTables.get()(from, to, source.rowBytes,
                                                        static_cast<std::int32_t>(std::min(width, most)),
                                                        static_cast<std::int32_t>(std::min(rows, most)),
                                                        red.data(), green.data(), blue.data());
                 });
}

#endif
