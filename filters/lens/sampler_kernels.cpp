// SPDX-License-Identifier: MIT
#include "filters/lens/sampler_kernels.h"

#include "simd/gather.h"
#include "simd/ints.h"
#include "simd/pixels.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <limits>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// blendPixels of every lane; a fraction stands in both halves of its lane.
Pixels mixed(Pixels a, Pixels b, Words fraction) {
    constexpr std::uint32_t even = 0x00FF00FF;
    const Words rest = 256 - fraction;
    const Words low = ((Words)(a & even) * rest + (Words)(b & even) * fraction) >> 8;
    const Words high = (Words)(a >> 8 & even) * rest + (Words)(b >> 8 & even) * fraction;
    return (Pixels)low | ((Pixels)high & ~even);
}

Words fractionOf(Ints positions) {
    const auto fraction = (Pixels)positions & 0xFF;
    return (Words)(fraction | fraction << 16);
}

/// The pixels about each lane's position.
struct Neighbourhood {
    PixelPairs upper;
    PixelPairs lower;
};

/// Fetches what the destination's next row will need: a vector's pixels fill more than one line, unless the
/// picture grows.
inline void prefetchBelow(const SampledPicture& picture, std::int32_t column, std::int32_t row) {
    const std::uint8_t* const below = picture.at(column, row + 2);
    __builtin_prefetch(below);
    __builtin_prefetch(below + cacheLineBytes);
}

#if defined(__AVX2__)
/// The same for positions that lie close together, as those of neighbours do unless the picture shrinks or
/// turns much: whole pieces of rows are read instead of pixel after pixel. False where it did nothing.
bool gatherFromRows(const SampledPicture& picture, Ints columns, Ints rows, Neighbourhood& found) {
    constexpr int last = laneCount<Ints> - 1;
    constexpr std::int32_t mostRows = 3;
    std::int32_t row[laneCount<Ints>];
    store(row, rows);
    if (std::abs(row[last] - row[0]) >= mostRows) return false;
    const std::int32_t first =
        std::min({columns[0], columns[last], picture.width - std::int32_t{PixelWindow::width}});
    const Ints indices = columns - first;
    if (first < 0 || !allTrue((Pixels)indices < PixelWindow::width - 1)) return false;
    std::uint32_t left = movemask(Ints{} == 0);
    do {
        const std::int32_t here = row[std::countr_zero(left)];
        const Ints inRow = rows == here;
        const std::uint8_t* const address = picture.at(first, here);
        const PixelWindow upper(address);
        const PixelWindow lower(address + picture.rowStep);
        prefetchBelow(picture, first, here);
        found.upper.left = inRow ? upper[indices] : found.upper.left;
        found.upper.right = inRow ? upper[indices + 1] : found.upper.right;
        found.lower.left = inRow ? lower[indices] : found.lower.left;
        found.lower.right = inRow ? lower[indices + 1] : found.lower.right;
        left &= ~movemask(inRow);
    } while (left != 0);
    return true;
}
#endif

/// Offsets in the picture fit 32 bits.
Neighbourhood gathered(const SampledPicture& picture, Ints columns, Ints rows) {
    Neighbourhood found{};
#if defined(__AVX2__)
    if (gatherFromRows(picture, columns, rows, found)) return found;
#endif
    const Ints offsets = rows * static_cast<std::int32_t>(picture.rowStep) + columns * 4;
    found.upper = gatherPairs(picture.top, offsets);
    found.lower = gatherPairs(picture.top + picture.rowStep, offsets);
    prefetchBelow(picture, columns[0], rows[0]);
    return found;
}

void row(const SampledPicture& picture, const std::int32_t* x, const std::int32_t* y,
         std::uint8_t* destination, std::int64_t width) {
    const auto sample = [&](std::int64_t i) {
        const std::uint32_t pixel = x[i] < 0 ? picture.fill : sampleWithEdgeFill(picture, x[i], y[i]);
        std::memcpy(destination + 4 * i, &pixel, sizeof pixel);
    };
    // The pixels that have all neighbours begin at the second pixel of the second row.
    const bool offsetsFit =
        std::abs(picture.rowStep) * picture.height <= std::numeric_limits<std::int32_t>::max();
    const bool hasInterior = picture.width > 2 && picture.height > 2 && offsetsFit;
    const std::uint32_t interiorWidth = hasInterior ? static_cast<std::uint32_t>(picture.width - 2) << 8 : 0;
    const std::uint32_t interiorHeight =
        hasInterior ? static_cast<std::uint32_t>(picture.height - 2) << 8 : 0;

    std::int64_t i = 0;
    for (; i + vectorPixels <= width; i += vectorPixels) {
        prefetchAhead<vectorBytes>(x + i);
        prefetchAhead<vectorBytes>(y + i);
        const Ints xs = load<Ints>(x + i);
        const Ints ys = load<Ints>(y + i);
        if (!allTrue(((Pixels)(xs - 256) < interiorWidth) & ((Pixels)(ys - 256) < interiorHeight))) {
            if (allTrue(xs < 0)) {
                store(destination + 4 * i, broadcast<Pixels>(picture.fill));
            } else {
                for (std::int64_t lane = 0; lane < vectorPixels; ++lane) sample(i + lane);
            }
            continue;
        }
        const Neighbourhood found = gathered(picture, xs >> 8, ys >> 8);
        const Words xFraction = fractionOf(xs);
        store(destination + 4 * i,
              mixed(mixed(found.upper.left, found.upper.right, xFraction),
                    mixed(found.lower.left, found.lower.right, xFraction), fractionOf(ys)));
    }
    for (; i < width; ++i) sample(i);
}

}  // namespace

const SamplerKernels samplerKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
