// SPDX-License-Identifier: MIT
// What Bend's render shares with its dialog.
#ifndef VIREO_FILTERS_WARP_BEND_H
#define VIREO_FILTERS_WARP_BEND_H

#include "framework/dialog_launcher.h"
#include "host/pixkit/pixkit.h"

#include <cstddef>
#include <cstdint>
#include <memory>

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

/// How large the host sees the record that becomes the dialog's.
inline constexpr std::size_t workRecordBytes = 56;

struct DisposeFrame {
    void operator()(FrameBuffer* frame) const { vpixDispose(frame); }
};
using WorkBuffer = std::unique_ptr<FrameBuffer, DisposeFrame>;

/// Of the source's size; null where there is none, or no memory.
WorkBuffer newWorkBuffer(const FilterInvocation& invocation);

/// Bends each column by the horizontal half, then each row by the vertical one. `step` counts frames. Without
/// a work buffer of the source's size the source is overwritten where both halves are active.
void bend(FrameBuffer* source, FrameBuffer* destination, FrameBuffer* work, std::int32_t step,
          const Settings& settings);

/// Takes the handle of the work record as its parameter.
VIREO_DIALOG_PROCEDURE(dialogProcedure);

}  // namespace Bend

#endif
