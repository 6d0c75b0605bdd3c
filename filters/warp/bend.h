// SPDX-License-Identifier: MIT
// What Bend's dialog shares with its render.
#ifndef VIREO_FILTERS_WARP_BEND_H
#define VIREO_FILTERS_WARP_BEND_H

#include "host/vrm/filter_invocation.h"

#include <cstddef>
#include <cstdint>

namespace Bend {

/// Which way the wave travels: along the line (left or up), against it, to its centre, to its ends.
enum Direction : std::uint16_t { Backward, Forward, In, Out };

enum Wave : std::uint16_t { Sine, Circle, Triangle, Square };

/// One half of the settings: the wave across the columns, or the one down the rows.
struct AxisSettings {
    std::uint16_t direction;
    std::uint16_t wave;
    std::int16_t intensity;  ///< The largest inset at each end of a line, percent of its length.
    std::int16_t rate;       ///< Quarter samples that the wave travels in a step.
    std::int16_t width;      ///< Wavelength, percent of the frame's size.

    template <class Visit>
    void fields(Visit&& visit) {
        visit(direction);
        visit(wave);
        visit(intensity);
        visit(rate);
        visit(width);
    }
};

struct Settings {
    AxisSettings horizontal;
    AxisSettings vertical;
    std::uint32_t fillColor;  ///< Goes into the frame as it is.

    template <class Visit>
    void fields(Visit&& visit) {
        horizontal.fields(visit);
        vertical.fields(visit);
        visit(fillColor);
    }
};

inline constexpr std::size_t settingsSize = 24;
static_assert(sizeof(Settings) == settingsSize);

/// The work record that the entry hands to the dialog.
struct WorkRecordFields {
    std::uint32_t step;
    std::uint32_t fillColor;
    Settings settings;
    FilterInvocation** invocation;
    std::uint64_t timer;
    FrameBuffer* work;  ///< Of the source's size, or null. The entry disposes it after the dialog.
};

/// How large the host sees it.
inline constexpr std::size_t workRecordSize = 56;
static_assert(sizeof(WorkRecordFields) <= workRecordSize);

/// Bends each column by the horizontal half, then each row by the vertical one. `step` counts frames. Without
/// a work buffer of the source's size the source is overwritten where both halves are active.
void render(FrameBuffer* source, FrameBuffer* destination, FrameBuffer* work, std::int32_t step,
            const Settings& settings);

}  // namespace Bend

#endif
