// SPDX-License-Identifier: MIT
#include "host/pixkit/axis_scale.h"

namespace PixKit {

AxisScale::AxisScale(const Range& source, const Range& sourceBuffer, const Range& destination,
                     const Range& destinationBuffer)
    : existing_(intersection(source, sourceBuffer)),
      sourceOrigin_(source.begin),
      destinationOrigin_(destination.begin) {
    if (existing_.empty() || destination.empty()) return;
    existing_ = {existing_.begin - source.begin, existing_.end - source.begin};
    sourceSize_ = static_cast<std::uint64_t>(source.size());
    destinationSize_ = static_cast<std::uint64_t>(destination.size());

    // Sides are below 2^32, so their products fit.
    const std::uint64_t first = static_cast<std::uint64_t>(existing_.begin) * destinationSize_ / sourceSize_;
    const std::uint64_t last =
        (static_cast<std::uint64_t>(existing_.end) * destinationSize_ - 1) / sourceSize_;
    written_ = intersection({destinationOrigin_ + static_cast<std::int64_t>(first),
                             destinationOrigin_ + static_cast<std::int64_t>(last) + 1},
                            destinationBuffer);
}

Range AxisScale::read() const {
    const Taps last = taps(written_.end - 1);
    return {taps(written_.begin).first, last.first + last.count};
}

std::uint64_t AxisScale::wholeSpan() const {
    const std::uint64_t span = sourceSize_ / destinationSize_;
    const bool cut = span * destinationSize_ != sourceSize_ || taps(written_.begin).total != sourceSize_ ||
                     taps(written_.end - 1).total != sourceSize_;
    return cut ? 0 : span;
}

Taps AxisScale::taps(std::int64_t position) const {
    const auto index = static_cast<std::uint64_t>(position - destinationOrigin_);
    return grows() ? linearTaps(index) : meanTaps(index);
}

// In units of 1/destinationSize_ of a source pixel: what exists of the span that the pixel covers.
Taps AxisScale::meanTaps(std::uint64_t index) const {
    const std::uint64_t unit = destinationSize_;
    const std::uint64_t begin =
        std::max(index * sourceSize_, static_cast<std::uint64_t>(existing_.begin) * unit);
    const std::uint64_t end =
        std::min((index + 1) * sourceSize_, static_cast<std::uint64_t>(existing_.end) * unit);
    const std::uint64_t first = begin / unit;
    const std::uint64_t last = (end - 1) / unit;
    return {sourceOrigin_ + static_cast<std::int64_t>(first), static_cast<std::int64_t>(last - first) + 1,
            std::min(end, (first + 1) * unit) - begin, end - last * unit, end - begin};
}

// In halves of that unit: from the last pixel centre at or before the pixel's own centre to the next. Centres
// beyond the ends repeat the end.
Taps AxisScale::linearTaps(std::uint64_t index) const {
    const std::uint64_t begin = index * sourceSize_;
    auto before = static_cast<std::int64_t>(begin / destinationSize_);
    const auto size = static_cast<std::int64_t>(destinationSize_);
    std::int64_t beyond = 2 * static_cast<std::int64_t>(begin % destinationSize_) +
                          static_cast<std::int64_t>(sourceSize_) - size;
    if (beyond < 0) {
        --before;
        beyond += 2 * size;
    }
    const std::int64_t first = std::clamp(before, existing_.begin, existing_.end - 1);
    const std::int64_t last = std::clamp(before + 1, existing_.begin, existing_.end - 1);
    const auto total = static_cast<std::uint64_t>(2 * size);
    if (first == last || beyond == 0) return {sourceOrigin_ + first, 1, total, total, total};
    const auto tail = static_cast<std::uint64_t>(beyond);
    return {sourceOrigin_ + first, 2, total - tail, tail, total};
}

}  // namespace PixKit
