// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_COLUMN_RUN_H
#define VIREO_HOST_PIXKIT_COLUMN_RUN_H

#include "host/pixkit/axis_scale.h"

#include <array>
#include <cstdint>
#include <memory>

namespace PixKit {

/// Neighbouring columns of 4-byte pixels that are replaced together, each by a scale of its own. They are
/// copied as lines, since a column's own pixels lie in as many lines of the cache as it has rows.
class ColumnRun {
public:
    /// What a line of the cache holds.
    static constexpr std::int64_t largest = 16;

    /// Takes as many rectangles from the first on as are such columns, of `count`.
    ColumnRun(const PixelView& source, const PixelView& destination, const FrameRect* sourceRects,
              const FrameRect* destinationRects, std::int64_t count);

    std::int64_t count() const { return count_; }
    Range sourceColumns() const { return {firstSource_, firstSource_ + count_}; }
    Range sourceRows() const { return sourceRows_; }
    Range destinationColumns() const { return {firstDestination_, firstDestination_ + count_}; }
    Range destinationRows() const { return rows_[0].written(); }

    /// Room for the lines of any runs.
    class Lines {
    public:
        /// Two times `largest` lines of so many pixels; null without memory.
        std::uint8_t* reserve(std::int64_t pixels);
        std::int64_t step() const { return step_; }

    private:
        std::unique_ptr<std::uint8_t[]> memory_;
        std::int64_t step_ = 0;
    };

    /// The views do not overlap where the run reads and writes. False without memory, and nothing is copied.
    bool copy(const PixelView& source, const PixelView& destination, Lines& lines) const;

private:
    bool add(const AxisScale& column, const AxisScale& rows);

    std::array<AxisScale, largest> rows_;
    std::int64_t count_ = 0;
    std::int64_t firstSource_ = 0;
    std::int64_t firstDestination_ = 0;
    Range sourceRows_{0, 0};
};

}  // namespace PixKit

#endif
