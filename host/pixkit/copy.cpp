// SPDX-License-Identifier: MIT
#include "host/hosting/worker_threads.h"
#include "host/pixkit/axis_scale.h"
#include "host/pixkit/column_run.h"
#include "host/pixkit/copy_rects.h"
#include "host/pixkit/pixkit.h"
#include "host/pixkit/scaled_copy.h"

#include <cstring>
#include <functional>
#include <memory>
#include <new>

namespace PixKit {
namespace {

/// The part of a view that a copy touches, as rows in memory.
struct Block {
    std::uint8_t* pixels;  // The row that lies lowest in memory.
    std::int64_t step;     // To the next row, not negative.
    std::int64_t rowLength;
    std::int64_t rows;

    std::int64_t length() const { return (rows - 1) * step + rowLength; }
};

Block blockOf(const PixelView& view, const Range& columns, const Range& rows) {
    std::uint8_t* lowest = view.at(columns.begin, view.rowBytes < 0 ? rows.begin : rows.end - 1);
    return {lowest, view.rowBytes < 0 ? -view.rowBytes : view.rowBytes, columns.size() * view.pixelBytes,
            rows.size()};
}

std::int64_t distance(const Block& from, const Block& to) {
    return static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(to.pixels)) -
           static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(from.pixels));
}

/// Whether blocks of equal step share a byte; where the steps differ, whether they might.
bool overlap(const Block& source, const Block& destination) {
    const std::int64_t ahead = distance(source, destination);
    if (ahead >= source.length() || -ahead >= destination.length()) return false;
    const std::int64_t step = source.step;
    if (step != destination.step || step < source.rowLength || step < destination.rowLength) return true;
    // The destination's first row begins in the source's row `row`, `column` bytes into it.
    const std::int64_t row = ahead >= 0 ? ahead / step : -((step - 1 - ahead) / step);
    const std::int64_t column = ahead - row * step;
    const auto meet = [&](std::int64_t sourceRow) {
        return sourceRow < source.rows && sourceRow + destination.rows > 0;
    };
    return (column < source.rowLength && meet(row)) ||
           (column + destination.rowLength > step && meet(row + 1));
}

/// Whether rows run the same way with the same step, each row apart from the next.
bool inStep(const PixelView& source, const Block& from, const PixelView& destination, const Block& to) {
    return source.rowBytes == destination.rowBytes && from.step >= from.rowLength && to.step >= to.rowLength;
}

/// Moves rows that are in step; overlap is safe.
void moveRows(const Block& source, const Block& destination) {
    if (source.step == source.rowLength) {
        std::memmove(destination.pixels, source.pixels, static_cast<std::size_t>(source.length()));
        return;
    }
    const auto moveRow = [&](std::int64_t row) {
        std::uint8_t* to = destination.pixels + row * destination.step;
        const std::uint8_t* from = source.pixels + row * source.step;
        if (source.rowLength == 4) {
            std::memcpy(to, from, 4);  // A column of pixels, too short for calls.
        } else {
            std::memmove(to, from, static_cast<std::size_t>(source.rowLength));
        }
    };
    if (distance(source, destination) > 0) {
        for (std::int64_t row = source.rows - 1; row >= 0; --row) moveRow(row);
    } else {
        for (std::int64_t row = 0; row < source.rows; ++row) moveRow(row);
    }
}

/// A part of a view copied aside.
class Aside {
public:
    Aside(const PixelView& view, const Range& columns, const Range& rows)
        : view_{nullptr, columns.size() * view.pixelBytes, view.pixelBytes, columns, rows} {
        const std::int64_t size = view_.rowBytes * rows.size();
        memory_.reset(new (std::nothrow) std::uint8_t[static_cast<std::size_t>(size)]);
        view_.pixels = memory_.get();
        if (memory_ == nullptr) return;
        for (std::int64_t y = rows.begin; y < rows.end; ++y) {
            std::memcpy(view_.at(columns.begin, y), view.at(columns.begin, y),
                        static_cast<std::size_t>(view_.rowBytes));
        }
    }

    const PixelView& view() const { return view_; }

private:
    PixelView view_;
    std::unique_ptr<std::uint8_t[]> memory_;
};

void copy(const PixelView& source, const PixelView& destination, const AxisScale& columns,
          const AxisScale& rows, std::uint32_t mode) {
    if (columns.written().empty() || rows.written().empty()) return;
    const Range readColumns = columns.read();
    const Range readRows = rows.read();
    const Block from = blockOf(source, readColumns, readRows);
    const Block to = blockOf(destination, columns.written(), rows.written());

    const Blend blend{(mode & VPixCopyBlend) == 0 ? fullWeight : mode & 0xFF};
    if (columns.copiesPixels() && rows.copiesPixels() && inStep(source, from, destination, to)) {
        if (blend.replaces()) return moveRows(from, to);
        if (distance(from, to) == 0) return scaledCopy(source, destination, columns, rows, blend);
    }
    if (!overlap(from, to)) return scaledCopy(source, destination, columns, rows, blend);
    const Aside aside(source, readColumns, readRows);
    if (aside.view().pixels == nullptr) return;
    scaledCopy(aside.view(), destination, columns, rows, blend);
}

void copyRect(const PixelView& source, const PixelView& destination, const FrameRect& from,
              const FrameRect& to, std::uint32_t mode) {
    if (source.pixelBytes != destination.pixelBytes) return;
    copy(source, destination, AxisScale(columnsOf(from), source.columns, columnsOf(to), destination.columns),
         AxisScale(rowsOf(from), source.rows, rowsOf(to), destination.rows), mode);
}

/// Copies that are written beside one another.
class CopyList {
public:
    CopyList(const PixelView& source, const PixelView& destination, const FrameRect* from,
             const FrameRect* to, std::uint32_t mode)
        : source_(source), destination_(destination), from_(from), to_(to), mode_(mode) {}

    /// Copies [begin, end) in their order.
    void copy(std::int64_t begin, std::int64_t end) const {
        const bool replacesBytes =
            (mode_ & VPixCopyBlend) == 0 && source_.pixelBytes == 4 && destination_.pixelBytes == 4;
        ColumnRun::Lines lines;
        for (std::int64_t i = begin; i < end;) {
            if (replacesBytes) {
                const ColumnRun run(source_, destination_, from_ + i, to_ + i, end - i);
                if (run.count() > 1 && copyTogether(run, lines)) {
                    i += run.count();
                    continue;
                }
            }
            copyRect(source_, destination_, from_[i], to_[i], mode_);
            ++i;
        }
    }

    /// Whether their order cannot be seen: the frames share no memory, and each rectangle lies below the one
    /// before or to its right.
    bool isUnordered(std::int64_t count) const {
        const Block from = blockOf(source_, source_.columns, source_.rows);
        const Block to = blockOf(destination_, destination_.columns, destination_.rows);
        if (to.step < to.rowLength || overlap(from, to)) return false;
        const auto follows = [&](auto begin, auto end) {
            for (std::int64_t i = 1; i < count; ++i) {
                if (to_[i].*begin < to_[i - 1].*end || to_[i].*end < to_[i].*begin) return false;
            }
            return true;
        };
        return follows(&FrameRect::left, &FrameRect::right) || follows(&FrameRect::top, &FrameRect::bottom);
    }

private:
    /// False where the order of the columns matters, or without memory; then nothing is copied.
    bool copyTogether(const ColumnRun& run, ColumnRun::Lines& lines) const {
        const Block from = blockOf(source_, run.sourceColumns(), run.sourceRows());
        const Block to = blockOf(destination_, run.destinationColumns(), run.destinationRows());
        return to.step >= to.rowLength && !overlap(from, to) && run.copy(source_, destination_, lines);
    }

    const PixelView& source_;
    const PixelView& destination_;
    const FrameRect* from_;
    const FrameRect* to_;
    std::uint32_t mode_;
};

}  // namespace

void copyRects(FrameBuffer* source, FrameBuffer* destination, const FrameRect* sourceRects,
               const FrameRect* destinationRects, std::int32_t count, std::uint32_t mode) {
    constexpr int leastRects = 64;
    const PixelView from = viewOf(source);
    const PixelView to = viewOf(destination);
    const CopyList copies(from, to, sourceRects, destinationRects, mode);
    const hosting::LentParts parts(count, leastRects);
    if (parts.count() == 1 || !copies.isUnordered(count)) return copies.copy(0, count);
    const auto copyPart = [&](int part) { copies.copy(parts.begin(part), parts.end(part)); };
    parts.run(std::ref(copyPart));
}

}  // namespace PixKit

void vpixCopy(FrameBuffer* source, FrameBuffer* destination, const FrameRect* sourceRect,
              const FrameRect* destinationRect, std::uint32_t mode) {
    PixKit::copyRect(PixKit::viewOf(source), PixKit::viewOf(destination), *sourceRect, *destinationRect,
                     mode);
}
