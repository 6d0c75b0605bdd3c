// SPDX-License-Identifier: MIT
#include "host/pixkit/line_kernels.h"

#include "host/pixkit/pixel_lanes.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

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

#if defined(VIREO_X86_KERNELS) || defined(__wasm_simd128__)

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

template <class Lanes>
class Interpolation {
public:
    using Integers = typename Lanes::Integers;

    explicit Interpolation(const LinePosition& position)
        : unit_(Lanes::all(static_cast<std::int32_t>(position.unit))),
          half_(Lanes::all(static_cast<std::int32_t>(position.unit / 2))),
          reciprocal_(Lanes::all(reciprocalAbove(position.unit))) {
        std::int32_t offsets[Lanes::pixels];
        for (int i = 0; i < Lanes::pixels; ++i) offsets[i] = i * static_cast<std::int32_t>(position.advance);
        offsets_ = Lanes::load(offsets);
    }

    /// For pixels from `phase` on: which source pixel lies before each, and its own phase.
    void place(std::uint32_t phase, Integers& indices, Integers& phases) const {
        const Integers places = Lanes::add(offsets_, Lanes::all(static_cast<std::int32_t>(phase)));
        indices = quotient(places);
        phases = Lanes::subtract(places, Lanes::sumOfProducts(indices, unit_));
    }

    Integers between(Integers before, Integers after, Integers phases) const {
        const Integers weights = Lanes::add(Lanes::upperHalves(phases), Lanes::subtract(unit_, phases));
        const Integers none = Lanes::all(0);
        const Integers low = Lanes::low(before, after);
        const Integers high = Lanes::high(before, after);
        return Lanes::toBytes(Lanes::toShorts(pixel<0>(Lanes::low(low, none), weights),
                                              pixel<1>(Lanes::high(low, none), weights)),
                              Lanes::toShorts(pixel<2>(Lanes::low(high, none), weights),
                                              pixel<3>(Lanes::high(high, none), weights)));
    }

private:
    Integers quotient(Integers v) const {
        return Lanes::truncate(Lanes::multiply(Lanes::toFloat(v), reciprocal_));
    }

    template <int lane>
    Integers pixel(Integers pairs, Integers weights) const {
        const Integers sums = Lanes::sumOfProducts(pairs, Lanes::template repeat<lane>(weights));
        return quotient(Lanes::add(sums, half_));
    }

    Integers unit_;
    Integers half_;
    Integers offsets_;
    typename Lanes::Floats reciprocal_;
};

/// Pixels anywhere in memory.
template <class Lanes>
void growScattered(LineWalk walk, std::int64_t step, const DestinationLine& destination,
                   const LinePosition& position) {
    const Interpolation<Lanes> interpolation(position);
    const std::uint32_t advance = Lanes::pixels * position.advance;
    const std::int64_t wholePixels = advance / position.unit;
    const std::uint32_t rest = advance % position.unit;
    std::uint8_t* to = destination.pixels;
    for (std::int64_t left = destination.count; left > 0; left -= Lanes::pixels) {
        typename Lanes::Integers indices;
        typename Lanes::Integers phases;
        interpolation.place(walk.phase, indices, phases);
        std::int32_t index[Lanes::pixels];
        Lanes::store(index, indices);
        const std::uint8_t* before[Lanes::pixels];
        const std::uint8_t* after[Lanes::pixels];
        for (int i = 0; i < Lanes::pixels; ++i) {
            // Lanes past the end repeat the first pixel.
            before[i] = walk.source + (i < left ? index[i] : 0) * step;
            after[i] = before[i] + step;
        }
        std::uint32_t result[Lanes::pixels];
        Lanes::store(result, interpolation.between(Lanes::gather(before), Lanes::gather(after), phases));
        for (int i = 0; i < Lanes::pixels && i < left; ++i, to += destination.step) {
            std::memcpy(to, &result[i], 4);
        }
        walk.advance(wholePixels, rest, step, position.unit);
    }
}

#if defined(__AVX2__)
/// Neighbours in memory: the pixels before a register's are among as many neighbours, since the line grows.
template <class Lanes>
void growNeighbours(LineWalk& walk, DestinationLine& destination, const LinePosition& position) {
    const Interpolation<Lanes> interpolation(position);
    const std::uint32_t advance = Lanes::pixels * position.advance;
    const std::int64_t wholePixels = advance / position.unit;
    const std::uint32_t rest = advance % position.unit;
    while (destination.count >= Lanes::pixels && walk.sourceLeft > Lanes::pixels) {
        typename Lanes::Integers indices;
        typename Lanes::Integers phases;
        interpolation.place(walk.phase, indices, phases);
        const auto before = Lanes::pick(Lanes::load(walk.source), indices);
        const auto after = Lanes::pick(Lanes::load(walk.source + 4), indices);
        Lanes::store(destination.pixels, interpolation.between(before, after, phases));
        destination.pixels += 4 * Lanes::pixels;
        destination.count -= Lanes::pixels;
        walk.advance(wholePixels, rest, 4, position.unit);
    }
}
#endif

void grow(const SourceLine& source, const DestinationLine& destination, const LinePosition& position) {
    LineWalk walk{source.pixels, source.count, position.phase};
    DestinationLine rest = destination;
#if defined(__AVX512BW__)
    if (source.step == 4 && destination.step == 4) growNeighbours<Lanes16>(walk, rest, position);
#elif defined(__AVX2__)
    if (source.step == 4 && destination.step == 4) growNeighbours<Lanes8>(walk, rest, position);
#endif
#if defined(__AVX2__)
    growScattered<Lanes8>(walk, source.step, rest, position);
#else
    growScattered<Lanes4>(walk, source.step, rest, position);
#endif
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

}  // namespace

const LineKernels lineKernels{grow};

}  // namespace VIREO_KERNEL_NAMESPACE
