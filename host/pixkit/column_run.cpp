// SPDX-License-Identifier: MIT
#include "host/pixkit/column_run.h"

#include "host/pixkit/lines.h"

#include <cstring>
#include <new>

namespace PixKit {
namespace {

constexpr std::int64_t cacheLine = 64;

/// The largest column for which lines are kept.
constexpr std::int64_t largestHeight = largestLineUnit / 2;

bool beginsCacheLine(const PixelView& view, std::int64_t x) {
    return reinterpret_cast<std::uintptr_t>(view.at(x, view.rows.end - 1)) % cacheLine == 0;
}

}  // namespace

ColumnRun::ColumnRun(const PixelView& source, const PixelView& destination, const FrameRect* sourceRects,
                     const FrameRect* destinationRects, std::int64_t count) {
    for (std::int64_t i = 0; i < std::min(count, largest); ++i) {
        const FrameRect& from = sourceRects[i];
        const FrameRect& to = destinationRects[i];
        if (i > 0 && beginsCacheLine(destination, to.left)) break;
        if (!add(AxisScale(columnsOf(from), source.columns, columnsOf(to), destination.columns),
                 AxisScale(rowsOf(from), source.rows, rowsOf(to), destination.rows)))
            break;
    }
}

bool ColumnRun::add(const AxisScale& column, const AxisScale& rows) {
    if (!column.copiesPixels() || column.written().size() != 1 || rows.written().empty()) return false;
    if (!growsByLine(rows) && !(rows.copiesPixels() && rows.written().size() <= largestHeight)) return false;
    const std::int64_t from = column.read().begin;
    const std::int64_t to = column.written().begin;
    if (count_ == 0) {
        firstSource_ = from;
        firstDestination_ = to;
        sourceRows_ = rows.read();
    } else if (from != firstSource_ + count_ || to != firstDestination_ + count_ ||
               rows.written() != destinationRows()) {
        return false;
    }
    sourceRows_ = {std::min(sourceRows_.begin, rows.read().begin),
                   std::max(sourceRows_.end, rows.read().end)};
    rows_[static_cast<std::size_t>(count_++)] = rows;
    return true;
}

std::uint8_t* ColumnRun::Lines::reserve(std::int64_t pixels) {
    // An odd number of cache lines, so that neighbours do not meet in the cache.
    const std::int64_t step = ((4 * pixels + cacheLine - 1) / cacheLine | 1) * cacheLine;
    if (step > step_) {
        memory_.reset(new (std::nothrow) std::uint8_t[static_cast<std::size_t>(2 * largest * step)]);
        step_ = memory_ != nullptr ? step : 0;
    }
    return memory_.get();
}

bool ColumnRun::copy(const PixelView& source, const PixelView& destination, Lines& lines) const {
    const LineKernels& kernels = lineKernelsTables.chosen();
    const Range& written = destinationRows();
    std::uint8_t* const from = lines.reserve(std::max(sourceRows_.size(), written.size()));
    if (from == nullptr) return false;
    std::uint8_t* const to = from + largest * lines.step();
    kernels.transpose(source.at(firstSource_, sourceRows_.begin), -source.rowBytes, from, lines.step(),
                      count_, sourceRows_.size());
    for (std::int64_t i = 0; i < count_; ++i) {
        const AxisScale& rows = rows_[static_cast<std::size_t>(i)];
        const Range read = rows.read();
        const std::uint8_t* const pixels = from + i * lines.step() + 4 * (read.begin - sourceRows_.begin);
        if (rows.grows()) {
            growLine({pixels, 4, read.size()}, {to + i * lines.step(), 4, written.size()}, rows);
        } else {
            std::memcpy(to + i * lines.step(), pixels, static_cast<std::size_t>(4 * written.size()));
        }
    }
    kernels.transpose(to, lines.step(), destination.at(firstDestination_, written.begin),
                      -destination.rowBytes, written.size(), count_);
    return true;
}

}  // namespace PixKit
