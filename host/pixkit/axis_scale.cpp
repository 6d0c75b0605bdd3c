// SPDX-License-Identifier: MIT
#include "host/pixkit/axis_scale.h"

#include <numeric>

namespace PixKit {

AxisScale::AxisScale(const Range& source, const Range& sourceBuffer, const Range& destination,
                     const Range& destinationBuffer)
    : existing_(intersection(source, sourceBuffer)),
      sourceOrigin_(source.begin),
      destinationOrigin_(destination.begin) {
    if (existing_.empty() || destination.empty()) return;
    existing_ = {existing_.begin - source.begin, existing_.end - source.begin};
    const auto sourceSize = static_cast<std::uint64_t>(source.size());
    const auto destinationSize = static_cast<std::uint64_t>(destination.size());
    const std::uint64_t common = std::gcd(sourceSize, destinationSize);
    sourceStep_ = sourceSize / common;
    destinationStep_ = destinationSize / common;

    // Sides are below 2^32, so their products fit.
    const std::uint64_t first = static_cast<std::uint64_t>(existing_.begin) * destinationStep_ / sourceStep_;
    const std::uint64_t last =
        (static_cast<std::uint64_t>(existing_.end) * destinationStep_ - 1) / sourceStep_;
    written_ = intersection({destinationOrigin_ + static_cast<std::int64_t>(first),
                             destinationOrigin_ + static_cast<std::int64_t>(last) + 1},
                            destinationBuffer);
}

Range AxisScale::read() const {
    const Taps last = taps(written_.end - 1);
    return {taps(written_.begin).first, last.first + last.count};
}

Taps AxisScale::taps(std::int64_t position) const {
    const auto index = static_cast<std::uint64_t>(position - destinationOrigin_);
    return grows() ? linearTaps(index) : meanTaps(index);
}

// In units of 1/destinationStep_ of a source pixel: what exists of the span that the pixel covers.
Taps AxisScale::meanTaps(std::uint64_t index) const {
    const std::uint64_t unit = destinationStep_;
    const std::uint64_t begin =
        std::max(index * sourceStep_, static_cast<std::uint64_t>(existing_.begin) * unit);
    const std::uint64_t end =
        std::min((index + 1) * sourceStep_, static_cast<std::uint64_t>(existing_.end) * unit);
    const std::uint64_t first = begin / unit;
    const std::uint64_t last = (end - 1) / unit;
    return {sourceOrigin_ + static_cast<std::int64_t>(first), static_cast<std::int64_t>(last - first) + 1,
            std::min(end, (first + 1) * unit) - begin, end - last * unit, end - begin};
}

// In halves of that unit: from the last pixel centre at or before the pixel's own centre to the next. Centres
// beyond the ends repeat the end.
Taps AxisScale::linearTaps(std::uint64_t index) const {
    const auto unit = static_cast<std::int64_t>(2 * destinationStep_);
    const __int128 centre =
        static_cast<__int128>(2 * index + 1) * sourceStep_ - static_cast<std::int64_t>(destinationStep_);
    const auto before = centre < 0 ? -1 : static_cast<std::int64_t>(centre / unit);
    const auto beyond = static_cast<std::uint64_t>(centre - static_cast<__int128>(before) * unit);
    const std::int64_t first = std::clamp(before, existing_.begin, existing_.end - 1);
    const std::int64_t last = std::clamp(before + 1, existing_.begin, existing_.end - 1);
    const auto total = static_cast<std::uint64_t>(unit);
    if (first == last || beyond == 0) return {sourceOrigin_ + first, 1, total, total, total};
    return {sourceOrigin_ + first, 2, total - beyond, beyond, total};
}

}  // namespace PixKit
