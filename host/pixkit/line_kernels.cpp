// SPDX-License-Identifier: MIT
#include "host/pixkit/line_kernels.h"

#include "simd/floats.h"
#include "simd/gather.h"
#include "simd/ints.h"
#include "simd/pixels.h"
#include "simd/words.h"

#include <algorithm>
#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// Walks the destination's pixels: the source pixel before the current one, and how far beyond it that lies.
struct LineWalk {
    const std::uint8_t* source;
    std::int64_t sourceLeft;
    std::uint32_t phase;

    void advance(std::int64_t pixels, std::uint32_t rest, std::int64_t step, std::uint32_t unit) {
        phase += rest;
        const bool carries = phase >= unit;
        phase -= carries ? unit : 0;
        source += (pixels + carries) * step;
        sourceLeft -= pixels + carries;
    }
};

#if defined(VIREO_SIMD_COMPLETE)

/// A whole number m divided by the unit is m * reciprocal truncated: the reciprocal is rounded up, and the
/// products of m < 256 * 2^14 err by less than what parts a quotient from the next whole number.
float reciprocalAbove(std::uint32_t unit) {
    const float nearest = 1.0F / static_cast<float>(unit);
    std::uint32_t bits;
    std::memcpy(&bits, &nearest, sizeof bits);
    ++bits;
    float above;
    std::memcpy(&above, &bits, sizeof above);
    return above;
}

/// As many pixels at a time as fill `bytes`.
template <int bytes>
class Interpolation {
public:
    using Lanes = Vector<std::int32_t, bytes>;
    using Source = Vector<std::uint32_t, bytes>;
    static constexpr int pixels = bytes / 4;

    explicit Interpolation(const LinePosition& position)
        : unit_(broadcast<Lanes>(static_cast<std::int32_t>(position.unit))),
          half_(broadcast<Lanes>(static_cast<std::int32_t>(position.unit / 2))),
          reciprocal_(broadcast<Vector<float, bytes>>(reciprocalAbove(position.unit))) {
        std::int32_t offsets[pixels];
        for (int i = 0; i < pixels; ++i) offsets[i] = i * static_cast<std::int32_t>(position.advance);
        offsets_ = load<Lanes>(offsets);
    }

    /// For pixels from `phase` on: which source pixel lies before each, and its own phase.
    void place(std::uint32_t phase, Lanes& indices, Lanes& phases) const {
        const Lanes places = offsets_ + static_cast<std::int32_t>(phase);
        indices = quotient(places);
        phases = places - madd((Halves)indices, (Halves)unit_);
    }

    Source between(Source before, Source after, Lanes phases) const {
        const Lanes weights = (phases << 16) + (unit_ - phases);
        const auto low = unpacklo((Octets)before, (Octets)after);
        const auto high = unpackhi((Octets)before, (Octets)after);
        const Octets none{};
        return (Source)packus(
            packs(pixel<0>(unpacklo(low, none), weights), pixel<1>(unpackhi(low, none), weights)),
            packs(pixel<2>(unpacklo(high, none), weights), pixel<3>(unpackhi(high, none), weights)));
    }

private:
    using Halves = Vector<std::int16_t, bytes>;
    using Octets = Vector<std::uint8_t, bytes>;

    Lanes quotient(Lanes dividends) const { return toInts(toFloats(dividends) * reciprocal_); }

    template <int lane>
    Lanes pixel(Octets pairs, Lanes weights) const {
        return quotient(madd((Halves)pairs, (Halves)repeat<lane>(weights)) + half_);
    }

    Lanes unit_;
    Lanes half_;
    Lanes offsets_;
    Vector<float, bytes> reciprocal_;
};

/// Pixels anywhere in memory.
template <int bytes>
void growScattered(LineWalk walk, std::int64_t step, const DestinationLine& destination,
                   const LinePosition& position) {
    using Line = Interpolation<bytes>;
    const Line interpolation(position);
    const std::uint32_t advance = Line::pixels * position.advance;
    const std::int64_t wholePixels = advance / position.unit;
    const std::uint32_t rest = advance % position.unit;
    std::uint8_t* to = destination.pixels;
    for (std::int64_t left = destination.count; left > 0; left -= Line::pixels) {
        typename Line::Lanes indices;
        typename Line::Lanes phases;
        interpolation.place(walk.phase, indices, phases);
        std::int32_t index[Line::pixels];
        store(index, indices);
        const std::uint8_t* before[Line::pixels];
        const std::uint8_t* after[Line::pixels];
        for (int i = 0; i < Line::pixels; ++i) {
            // Lanes past the end repeat the first pixel.
            before[i] = walk.source + (i < left ? index[i] : 0) * step;
            after[i] = before[i] + step;
        }
        std::uint32_t result[Line::pixels];
        store(result, interpolation.between(gather<bytes>(before), gather<bytes>(after), phases));
        for (int i = 0; i < Line::pixels && i < left; ++i, to += destination.step) {
            std::memcpy(to, &result[i], 4);
        }
        walk.advance(wholePixels, rest, step, position.unit);
    }
}

/// The pixel at each index from `source` on, and the one beside it. Indices are below a register's pixels.
PixelPairs pairsFrom(const std::uint8_t* source, Ints indices) {
#if defined(__AVX2__)
    return {permute(load<Pixels>(source), indices), permute(load<Pixels>(source + 4), indices)};
#else
    return gatherPairs(source, indices * 4);
#endif
}

/// Neighbours in memory: the pixels before a register's are among as many neighbours, since the line grows.
void growNeighbours(LineWalk& walk, DestinationLine& destination, const LinePosition& position) {
    const Interpolation<vectorBytes> interpolation(position);
    constexpr int pixels = laneCount<Pixels>;
    const std::uint32_t advance = pixels * position.advance;
    const std::int64_t wholePixels = advance / position.unit;
    const std::uint32_t rest = advance % position.unit;
    while (destination.count >= pixels && walk.sourceLeft > pixels) {
        Ints indices;
        Ints phases;
        interpolation.place(walk.phase, indices, phases);
        const PixelPairs pairs = pairsFrom(walk.source, indices);
        store(destination.pixels, interpolation.between(pairs.left, pairs.right, phases));
        destination.pixels += 4 * pixels;
        destination.count -= pixels;
        walk.advance(wholePixels, rest, 4, position.unit);
    }
}

void grow(const SourceLine& source, const DestinationLine& destination, const LinePosition& position) {
    LineWalk walk{source.pixels, source.count, position.phase};
    DestinationLine rest = destination;
    if (source.step == 4 && destination.step == 4) growNeighbours(walk, rest, position);
    growScattered<std::min(vectorBytes, 32)>(walk, source.step, rest, position);
}

#else

void grow(const SourceLine& source, const DestinationLine& destination, const LinePosition& position) {
    LineWalk walk{source.pixels, source.count, position.phase};
    std::uint8_t* to = destination.pixels;
    for (std::int64_t i = 0; i < destination.count; ++i, to += destination.step) {
        for (int c = 0; c < 4; ++c) {
            const std::uint32_t sum =
                walk.source[c] * (position.unit - walk.phase) + walk.source[source.step + c] * walk.phase;
            to[c] = static_cast<std::uint8_t>((sum + position.unit / 2) / position.unit);
        }
        walk.advance(0, position.advance, source.step, position.unit);
    }
}

#endif

void transpose(const std::uint8_t* source, std::int64_t sourceStep, std::uint8_t* destination,
               std::int64_t destinationStep, std::int64_t width, std::int64_t height) {
    using Four = Vector<std::uint32_t, 16>;
    const std::int64_t squaresAcross = width / 4 * 4;
    const std::int64_t squaresDown = height / 4 * 4;
    const auto square = [&](std::int64_t x, std::int64_t y) {
        Four rows[4];
        for (int i = 0; i < 4; ++i) rows[i] = load<Four>(source + (y + i) * sourceStep + 4 * x);
        transposeSquares(rows);
        for (int i = 0; i < 4; ++i) store(destination + (x + i) * destinationStep + 4 * y, rows[i]);
    };
    const auto pixel = [&](std::int64_t x, std::int64_t y) {
        std::memcpy(destination + x * destinationStep + 4 * y, source + y * sourceStep + 4 * x, 4);
    };
    // Along the longer side, so that both walk their memory once.
    if (height > width) {
        for (std::int64_t y = 0; y < squaresDown; y += 4) {
            for (std::int64_t x = 0; x < squaresAcross; x += 4) square(x, y);
        }
    } else {
        for (std::int64_t x = 0; x < squaresAcross; x += 4) {
            for (std::int64_t y = 0; y < squaresDown; y += 4) square(x, y);
        }
    }
    for (std::int64_t x = 0; x < width; ++x) {
        for (std::int64_t y = x < squaresAcross ? squaresDown : 0; y < height; ++y) pixel(x, y);
    }
}

}  // namespace

const LineKernels lineKernels{grow, transpose};

}  // namespace VIREO_KERNEL_NAMESPACE
