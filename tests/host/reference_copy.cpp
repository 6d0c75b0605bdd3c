// SPDX-License-Identifier: MIT
#include "tests/host/reference_copy.h"

#include <algorithm>
#include <type_traits>

namespace {

using Whole = __int128;

struct Weighted {
    std::int64_t coordinate;
    Whole weight;
};

struct Side {
    std::int64_t begin;
    std::int64_t end;
};

/// The source pixels that make up a destination pixel, along one axis.
std::vector<Weighted> weightsOf(Side source, Side sourceBuffer, Side destination, std::int64_t position) {
    const std::int64_t sourceSize = source.end - source.begin;
    const std::int64_t destinationSize = destination.end - destination.begin;
    const Whole index = position - destination.begin;
    const std::int64_t first = std::max(source.begin, sourceBuffer.begin);
    const std::int64_t last = std::min(source.end, sourceBuffer.end);
    // Pixels farther away have no weight, and need no look.
    const auto near = source.begin + static_cast<std::int64_t>(index * sourceSize / destinationSize);
    const std::int64_t reach = sourceSize / destinationSize + 2;
    const std::int64_t low = std::max(first, near - reach);
    const std::int64_t high = std::min(last, near + reach + 1);
    std::vector<Weighted> span;
    for (std::int64_t x = low; x < high; ++x) {
        const Whole begin = std::max<Whole>(Whole(x - source.begin) * destinationSize, index * sourceSize);
        const Whole end =
            std::min<Whole>(Whole(x - source.begin + 1) * destinationSize, (index + 1) * sourceSize);
        if (end > begin) span.push_back({x, end - begin});
    }
    if (span.empty() || sourceSize >= destinationSize) return span;

    // One pixel more than there is at either end, repeating the end.
    std::vector<Weighted> linear;
    const auto add = [&](std::int64_t x) {
        const std::int64_t repeated = std::clamp(x, source.begin, source.end - 1);
        if (repeated < first || repeated >= last) return;
        const Whole apart =
            (2 * Whole(x - source.begin) + 1) * destinationSize - (2 * index + 1) * sourceSize;
        const Whole weight = 2 * Whole(destinationSize) - (apart < 0 ? -apart : apart);
        if (weight > 0) linear.push_back({repeated, weight});
    };
    add(source.begin - 1);
    for (std::int64_t x = low; x < high; ++x) add(x);
    add(source.end);
    return linear;
}

template <class Sample>
Sample sampleAt(const Memory& memory, std::size_t offset) {
    Sample sample;
    std::memcpy(&sample, memory.data() + offset, sizeof sample);
    return sample;
}

template <class Sample>
Sample combined(const std::vector<Weighted>& across, const std::vector<Weighted>& down,
                const TestBuffer& source, const Memory& memory, std::size_t channel) {
    using Sum = std::conditional_t<std::is_floating_point_v<Sample>, long double, Whole>;
    Sum sum = 0;
    Sum total = 0;
    for (const Weighted& row : down) {
        for (const Weighted& column : across) {
            const Sum weight = static_cast<Sum>(row.weight) * static_cast<Sum>(column.weight);
            sum += weight * static_cast<Sum>(sampleAt<Sample>(
                                memory, source.offset(column.coordinate, row.coordinate) + channel));
            total += weight;
        }
    }
    if constexpr (std::is_floating_point_v<Sample>) return static_cast<Sample>(sum / total);
    return static_cast<Sample>((2 * sum + total) / (2 * total));
}

template <class Sample>
void copySamples(const TestBuffer& source, const TestBuffer& destination, const FrameRect& from,
                 const FrameRect& to, std::uint32_t mode, const Memory& before, Memory& after) {
    const FrameRect& have = source.bounds();
    const FrameRect& want = destination.bounds();
    for (std::int64_t y = std::max(to.top, want.top); y < std::min(to.bottom, want.bottom); ++y) {
        const auto down = weightsOf({from.top, from.bottom}, {have.top, have.bottom}, {to.top, to.bottom}, y);
        for (std::int64_t x = std::max(to.left, want.left); x < std::min(to.right, want.right); ++x) {
            const auto across =
                weightsOf({from.left, from.right}, {have.left, have.right}, {to.left, to.right}, x);
            if (down.empty() || across.empty()) continue;
            for (std::size_t channel = 0; channel < 4 * sizeof(Sample); channel += sizeof(Sample)) {
                const std::size_t offset = destination.offset(x, y) + channel;
                Sample value = combined<Sample>(across, down, source, before, channel);
                if ((mode & 0x8000) != 0) {
                    const auto old = sampleAt<Sample>(after, offset);
                    const std::uint32_t weight = mode & 0xFF;
                    if constexpr (std::is_floating_point_v<Sample>) {
                        value = static_cast<Sample>((value * weight + old * (255.0 - weight)) / 255.0);
                    } else {
                        value = static_cast<Sample>((value * weight + old * (255 - weight) + 127) / 255);
                    }
                }
                std::memcpy(after.data() + offset, &value, sizeof value);
            }
        }
    }
}

}  // namespace

void referenceCopy(const TestBuffer& source, const TestBuffer& destination, const FrameRect& sourceRect,
                   const FrameRect& destinationRect, std::uint32_t mode, const Memory& sourceBefore,
                   Memory& after) {
    if (sourceRect.right <= sourceRect.left || sourceRect.bottom <= sourceRect.top) return;
    switch (source.pixelBytes()) {
        case 16:
            return copySamples<float>(source, destination, sourceRect, destinationRect, mode, sourceBefore,
                                      after);
        case 8:
            return copySamples<std::uint16_t>(source, destination, sourceRect, destinationRect, mode,
                                              sourceBefore, after);
        default:
            return copySamples<std::uint8_t>(source, destination, sourceRect, destinationRect, mode,
                                             sourceBefore, after);
    }
}
