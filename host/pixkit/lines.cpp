// SPDX-License-Identifier: MIT
#include "host/pixkit/lines.h"

#include <cstring>

namespace PixKit {

/// One line of a growing axis: the ends, which repeat a pixel, and what lies between neighbours.
void growLine(const SourceLine& source, const DestinationLine& destination, const AxisScale& axis) {
    const std::int64_t origin = axis.read().begin;
    Range between = axis.written();
    const auto pixelAt = [&](std::int64_t position) {
        return destination.pixels + (position - axis.written().begin) * destination.step;
    };
    const auto copyAlone = [&](std::int64_t position) {
        const Taps taps = axis.taps(position);
        if (taps.count > 1) return false;
        std::memcpy(pixelAt(position), source.pixels + (taps.first - origin) * source.step, 4);
        return true;
    };
    while (!between.empty() && copyAlone(between.begin)) ++between.begin;
    while (!between.empty() && copyAlone(between.end - 1)) --between.end;
    if (between.empty()) return;

    const Taps first = axis.taps(between.begin);
    const std::int64_t skipped = first.first - origin;
    lineKernelsTables.chosen().grow(
        {source.pixels + skipped * source.step, source.step, source.count - skipped},
        {pixelAt(between.begin), destination.step, between.size()},
        {static_cast<std::uint32_t>(first.tail), static_cast<std::uint32_t>(axis.advance()),
         static_cast<std::uint32_t>(first.total)});
}

}  // namespace PixKit
