// SPDX-License-Identifier: MIT
#include "host/pixkit/scaled_copy.h"

#include <cstring>
#include <type_traits>

namespace PixKit {
namespace {

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
    if (weight == 255) return source;  // Whatever lies in the destination, a NaN too.
    if constexpr (std::is_floating_point_v<Sample>) {
        return static_cast<Sample>((double{source} * weight + double{destination} * (255 - weight)) / 255);
    } else {
        return static_cast<Sample>((source * weight + destination * (255 - weight) + 127) / 255);
    }
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

}  // namespace

void scaledCopy(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                const AxisScale& rows, Blend blend) {
    switch (source.pixelBytes) {
        case 16: return scaleSamples<float>(source, destination, columns, rows, blend);
        case 8: return scaleSamples<std::uint16_t>(source, destination, columns, rows, blend);
        default: return scaleSamples<std::uint8_t>(source, destination, columns, rows, blend);
    }
}

}  // namespace PixKit
