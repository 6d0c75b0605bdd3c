// SPDX-License-Identifier: MIT
#include "host/pixkit/scaled_copy.h"

#include "host/pixkit/copy_kernels.h"
#include "host/pixkit/lines.h"

#include <cstring>
#include <type_traits>

namespace PixKit {
namespace {

const CopyKernels& kernels = copyKernelsTables.chosen();

/// Sums over weighted samples are exact for whole numbers, whatever the rectangles.
template <class Sample>
using SumOf = std::conditional_t<std::is_floating_point_v<Sample>, double, unsigned __int128>;

template <class Sample>
Sample quotient(SumOf<Sample> sum, SumOf<Sample> weights) {
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>(sum / weights);
    } else {
        return static_cast<Sample>((2 * sum + weights) / (2 * weights));
    }
}

template <class Sample>
Sample blended(Sample source, Sample destination, std::uint32_t weight) {
    if (weight == fullWeight) return source;  // Whatever lies in the destination, a NaN too.
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>((double{source} * weight + double{destination} * (255 - weight)) / 255);
    } else {
        return static_cast<Sample>((source * weight + destination * (255 - weight) + 127) / 255);
    }
}

/// Calls row(y) for every row to write, the last first: rows are stored bottom-up, and the processor reads
/// ahead of those who walk memory upwards.
template <class Row>
void forEachRowInMemory(const AxisScale& rows, Row&& row) {
    for (std::int64_t y = rows.written().end - 1; y >= rows.written().begin; --y) row(y);
}

std::uint64_t weightAt(const Taps& taps, std::int64_t index, std::uint64_t body) {
    if (index == 0) return taps.head;
    return index == taps.count - 1 ? taps.tail : body;
}

template <class Sample>
void scaleSamples(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                  const AxisScale& rows, Blend blend) {
    using Sum = SumOf<Sample>;
    for (std::int64_t y = rows.written().begin; y < rows.written().end; ++y) {
        const Taps down = rows.taps(y);
        for (std::int64_t x = columns.written().begin; x < columns.written().end; ++x) {
            const Taps across = columns.taps(x);
            Sum sums[4] = {};
            for (std::int64_t j = 0; j < down.count; ++j) {
                const std::uint8_t* pixel = source.at(across.first, down.first + j);
                const Sum rowWeight = static_cast<Sum>(weightAt(down, j, rows.bodyWeight()));
                for (std::int64_t i = 0; i < across.count; ++i, pixel += source.pixelBytes) {
                    Sample samples[4];
                    std::memcpy(samples, pixel, sizeof samples);
                    const Sum weight =
                        rowWeight * static_cast<Sum>(weightAt(across, i, columns.bodyWeight()));
                    for (int c = 0; c < 4; ++c) sums[c] += weight * static_cast<Sum>(samples[c]);
                }
            }
            Sample result[4];
            std::memcpy(result, destination.at(x, y), sizeof result);
            const Sum weights = static_cast<Sum>(across.total) * static_cast<Sum>(down.total);
            for (int c = 0; c < 4; ++c) {
                result[c] = blended(quotient<Sample>(sums[c], weights), result[c], blend.weight);
            }
            std::memcpy(destination.at(x, y), result, sizeof result);
        }
    }
}

/// Lays finished pixels over the destination; those that blend have 4 bytes.
void put(const std::uint8_t* pixels, std::uint8_t* destination, std::int64_t bytes, Blend blend) {
    if (blend.replaces()) {
        std::memcpy(destination, pixels, static_cast<std::size_t>(bytes));
    } else {
        kernels.blend(pixels, destination, bytes, blend.weight);
    }
}

void copyPixels(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                const AxisScale& rows, Blend blend) {
    const Range& to = columns.written();
    const std::int64_t from = columns.read().begin;
    const std::int64_t fromRow = rows.read().begin - rows.written().begin;
    forEachRowInMemory(rows, [&](std::int64_t y) {
        put(source.at(from, fromRow + y), destination.at(to.begin, y), source.pixelBytes * to.size(), blend);
    });
}

void growRows(const PixelView& source, const PixelView& destination, const AxisScale& columns,
              const AxisScale& rows) {
    const Range from = columns.read();
    const std::int64_t fromRow = rows.read().begin - rows.written().begin;
    forEachRowInMemory(rows, [&](std::int64_t y) {
        growLine({source.at(from.begin, fromRow + y), 4, from.size()},
                 {destination.at(columns.written().begin, y), 4, columns.written().size()}, columns);
    });
}

void growColumn(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                const AxisScale& rows) {
    const Range from = rows.read();
    growLine({source.at(columns.read().begin, from.begin), -source.rowBytes, from.size()},
             {destination.at(columns.written().begin, rows.written().begin), -destination.rowBytes,
              rows.written().size()},
             rows);
}

constexpr std::int64_t blockPixels = 256;  // Destination pixels of a row that are made at a time.

void copyBoxes(const PixelView& source, const PixelView& destination, const AxisScale& columns,
               const AxisScale& rows, Blend blend) {
    const auto across = static_cast<std::int32_t>(columns.wholeSpan());
    const auto down = static_cast<std::int32_t>(rows.wholeSpan());
    const Range& to = columns.written();
    const std::int64_t firstRow = rows.read().begin;
    forEachRowInMemory(rows, [&](std::int64_t y) {
        // The last of the box's rows lies lowest in memory.
        const std::uint8_t* from =
            source.at(columns.read().begin, firstRow + (y - rows.written().begin + 1) * down - 1);
        if (blend.replaces()) {
            kernels.boxMeans(from, source.rowBytes, across, down, destination.at(to.begin, y), to.size());
            return;
        }
        for (std::int64_t x = to.begin; x < to.end; x += blockPixels) {
            std::uint8_t pixels[4 * blockPixels];
            const std::int64_t count = std::min(blockPixels, to.end - x);
            kernels.boxMeans(from + 4 * across * (x - to.begin), source.rowBytes, across, down, pixels,
                             count);
            put(pixels, destination.at(x, y), 4 * count, blend);
        }
    });
}

RunWeights runWeights(const Taps& taps, const AxisScale& axis) {
    return {static_cast<std::int32_t>(taps.count), static_cast<float>(taps.head),
            static_cast<float>(axis.bodyWeight()), static_cast<float>(taps.tail)};
}

/// Up to such totals the kernels' sums are exact.
constexpr std::uint64_t largestExactTotal = 1 << 16;

constexpr std::int64_t blockSourcePixels = 1024;

void scaleBytes(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                const AxisScale& rows, Blend blend) {
    std::int64_t x = columns.written().begin;
    while (x < columns.written().end) {
        PixelRun runs[blockPixels];
        const std::int64_t from = columns.taps(x).first;
        std::int64_t count = 0;
        std::int64_t sourcePixels = 0;
        for (; count < blockPixels && x + count < columns.written().end; ++count) {
            const Taps taps = columns.taps(x + count);
            const std::int64_t end = taps.first + taps.count - from;
            if (end > blockSourcePixels) break;
            sourcePixels = end;
            const auto total = static_cast<double>(taps.total);
            runs[count] = {static_cast<std::int32_t>(taps.first - from), runWeights(taps, columns), total,
                           1 / total};
        }
        forEachRowInMemory(rows, [&](std::int64_t y) {
            const Taps down = rows.taps(y);
            float sums[4 * blockSourcePixels];
            std::uint8_t pixels[4 * blockPixels];
            kernels.sumDown(source.at(from, down.first), -source.rowBytes, runWeights(down, rows), sums,
                            4 * sourcePixels);
            kernels.meanAcross(sums, runs, static_cast<double>(down.total), pixels, count);
            put(pixels, destination.at(x, y), 4 * count, blend);
        });
        x += count;
    }
}

bool boxesFit(const AxisScale& columns, const AxisScale& rows) {
    constexpr std::uint64_t largest = 16;
    const auto fits = [](const AxisScale& axis) {
        return axis.wholeSpan() >= 1 && axis.wholeSpan() <= largest;
    };
    return fits(columns) && fits(rows);
}

bool exactInBlocks(const AxisScale& columns, const AxisScale& rows) {
    return columns.largestTotal() <= largestExactTotal && rows.largestTotal() <= largestExactTotal &&
           columns.largestCount() <= blockSourcePixels;
}

void scaleBytePixels(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                     const AxisScale& rows, Blend blend) {
    if (blend.replaces() && rows.copiesPixels() && growsByLine(columns)) {
        return growRows(source, destination, columns, rows);
    }
    if (blend.replaces() && columns.copiesPixels() && columns.written().size() == 1 && growsByLine(rows)) {
        return growColumn(source, destination, columns, rows);
    }
    if (boxesFit(columns, rows)) return copyBoxes(source, destination, columns, rows, blend);
    if (exactInBlocks(columns, rows)) return scaleBytes(source, destination, columns, rows, blend);
    scaleSamples<std::uint8_t>(source, destination, columns, rows, blend);
}

}  // namespace

void scaledCopy(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                const AxisScale& rows, Blend blend) {
    // Deep pixels move whole as well: arithmetic would change the bits of some that are not numbers.
    if (columns.copiesPixels() && rows.copiesPixels() && (blend.replaces() || source.pixelBytes == 4)) {
        return copyPixels(source, destination, columns, rows, blend);
    }
    switch (source.pixelBytes) {
        case 16: return scaleSamples<float>(source, destination, columns, rows, blend);
        case 8: return scaleSamples<std::uint16_t>(source, destination, columns, rows, blend);
        default: return scaleBytePixels(source, destination, columns, rows, blend);
    }
}

}  // namespace PixKit
