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
    /// Writes nothing.
    AxisScale() = default;

    /// The rectangles' sides fix the scale, the buffers' sides what exists and what may be written.
    AxisScale(const Range& source, const Range& sourceBuffer, const Range& destination,
              const Range& destinationBuffer);

    /// The destination pixels to write: inside their buffer, and covering source that exists.
    const Range& written() const { return written_; }

    /// The source pixels that the written ones are made of.
    Range read() const;

    bool copiesPixels() const { return sourceSize_ == destinationSize_; }
    bool grows() const { return sourceSize_ < destinationSize_; }

    /// `position` lies in written().
    Taps taps(std::int64_t position) const;
    std::uint64_t bodyWeight() const { return destinationSize_; }

    /// No pixel's weights sum to more.
    std::uint64_t largestTotal() const { return std::max(sourceSize_, 2 * destinationSize_); }

    /// No pixel is made of more source pixels.
    std::uint64_t largestCount() const { return sourceSize_ / destinationSize_ + 2; }

    /// How many whole source pixels each written pixel covers, 0 where they are cut.
    std::uint64_t wholeSpan() const;

    /// In a growing axis: how much further each pixel lies than the one before, in units of which
    /// 2 * bodyWeight() make a source pixel.
    std::uint64_t advance() const { return 2 * sourceSize_; }

private:
    Taps meanTaps(std::uint64_t index) const;
    Taps linearTaps(std::uint64_t index) const;

    Range written_{0, 0};
    Range existing_{0, 0};  // Source that exists, relative to the source rectangle.
    std::int64_t sourceOrigin_ = 0;
    std::int64_t destinationOrigin_ = 0;
    std::uint64_t sourceSize_ = 1;
    std::uint64_t destinationSize_ = 1;
};

}  // namespace PixKit

#endif
