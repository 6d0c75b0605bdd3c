// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_AXIS_SCALE_H
#define VIREO_HOST_PIXKIT_AXIS_SCALE_H

#include "host/pixkit/pixel_view.h"

#include <cstdint>

namespace PixKit {

/// The source pixels that one destination pixel is made of, with their weights: `head` for the first, `tail`
/// for the last where there is more than one, the axis's bodyWeight() for those between.
struct Taps {
    std::int64_t first;
    std::int64_t count;
    std::uint64_t head;
    std::uint64_t tail;
    std::uint64_t total;
};

/// How one axis of a copy scales. Weights are whole numbers, so that sums over them are exact.
class AxisScale {
public:
    /// The rectangles' sides fix the scale, the buffers' sides what exists and what may be written.
    AxisScale(const Range& source, const Range& sourceBuffer, const Range& destination,
              const Range& destinationBuffer);

    /// The destination pixels to write: inside their buffer, and covering source that exists.
    const Range& written() const { return written_; }

    /// The source pixels that the written ones are made of.
    Range read() const;

    bool copiesPixels() const { return sourceStep_ == destinationStep_; }
    bool grows() const { return sourceStep_ < destinationStep_; }

    /// `position` lies in written().
    Taps taps(std::int64_t position) const;
    std::uint64_t bodyWeight() const { return destinationStep_; }

private:
    Taps meanTaps(std::uint64_t index) const;
    Taps linearTaps(std::uint64_t index) const;

    Range written_{0, 0};
    Range existing_;  // Source that exists, relative to the source rectangle.
    std::int64_t sourceOrigin_;
    std::int64_t destinationOrigin_;
    std::uint64_t sourceStep_ = 1;       // The sides' lengths, reduced: so many source pixels
    std::uint64_t destinationStep_ = 1;  // go to so many destination pixels.
};

}  // namespace PixKit

#endif
