// SPDX-License-Identifier: MIT
// What Levels' render shares with its dialog and its parameter file.
#ifndef VIREO_FILTERS_COLOR_LEVELS_H
#define VIREO_FILTERS_COLOR_LEVELS_H

#include "framework/channel_tables.h"
#include "framework/dialog_launcher.h"

#include <cstddef>
#include <cstdint>

namespace Levels {

/// One group of levels. Black and white points are meant from 0 to 255; gamma counts in hundredths.
struct Channel {
    std::int16_t inputBlack = 0;
    std::int16_t inputWhite = 255;
    std::int16_t outputBlack = 0;
    std::int16_t outputWhite = 255;
    std::int16_t gamma = 100;

    bool operator==(const Channel&) const = default;
};

struct Settings {
    Channel master;
    Channel red;
    Channel green;
    Channel blue;
};

static_assert(sizeof(Settings) == 40);

/// How large the host sees the record that becomes the dialog's.
inline constexpr std::size_t workRecordBytes = 4424;

/// The table that maps one colour channel, its own group composed with the master's. Any values are allowed.
ChannelTable buildTable(const Channel& channel, const Channel& master);

/// Maps the invocation's source frame into its destination frame. Does nothing while no invocation brought
/// the host's services. Result 0.
std::int32_t render(const FilterInvocation& invocation, const Settings& settings);

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace Levels

#endif
