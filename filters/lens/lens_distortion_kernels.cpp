// SPDX-License-Identifier: MIT
// Fixed-point arithmetic in doubles: whole numbers below 2^53 and their products are exact there. Only the
// product of the two distances can leave 32 bits. Every other term is bounded by the frame's size, since the
// distances are at most what radius and norm were made of, and the lens's terms are 1.0 at most.
#include "filters/lens/lens_distortion_kernels.h"

#include "simd/doubles.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// Truncated and limited as the fixed point is: what lies below 32 bits becomes one more than the least of
/// them.
Doubles saturated(Doubles values) {
    constexpr double largest = 2147483647.0;
    const Doubles most = broadcast<Doubles>(largest);
    values = values < most ? values : most;
    return trunc(values > -largest - 2 ? values : -most);
}

/// What a lens and a frame need computed.
enum class Terms {
    Bend,   ///< The lens only bends: all other terms are 0.
    Small,  ///< No product leaves 32 bits.
    All,
};

template <Terms terms>
void placeBlocks(const LensFrame& frame, const LensColumns& offsets, const LensOffset& row, std::int32_t* x,
                 std::int32_t* y, std::int32_t columns) {
    static_assert(lensColumnBlock % laneCount<Doubles> == 0);
    constexpr double fraction = 1.0 / 65536;
    const double xPositions = 1 / (256 * frame.xStep);
    const double yPositions = 1 / (256 * frame.yStep);
    const Doubles outside = broadcast<Doubles>(-1);
    for (std::int32_t i = 0; i < columns; i += laneCount<Doubles>) {
        const Doubles radius = trunc(sqrt(load<Doubles>(offsets.squared + i) + row.squared) * 65536);
        const Doubles relativeRadius = trunc(radius * frame.perRadius);
        Doubles xPlace = trunc(load<Doubles>(offsets.curved + i) * (relativeRadius * fraction)) +
                         load<Doubles>(offsets.rounded + i) + frame.halfWidth;
        Doubles yPlace = trunc(row.curved * (relativeRadius * fraction)) + row.rounded + frame.halfHeight;
        if constexpr (terms != Terms::Bend) {
            const Doubles tenths = load<Doubles>(offsets.tenth + i) * (row.tenth * fraction);
            const Doubles product =
                terms == Terms::Small ? 2 * trunc(tenths) : saturated(2 * saturated(tenths));
            const Doubles squares =
                trunc((row.hundredthSquared + load<Doubles>(offsets.hundredthSquared + i)) * frame.perRadius);
            xPlace += trunc(trunc(product * frame.horizontalDecentering) * frame.perNorm) +
                      trunc(frame.verticalDecentering * squares) * 10000 +
                      trunc(frame.verticalPrism * radius);
            yPlace += trunc(trunc(product * frame.verticalDecentering) * frame.perNorm) +
                      trunc(frame.horizontalDecentering * squares) * 10000 +
                      trunc(frame.horizontalPrism * radius);
        }
        // A position short of 0 by less than its last bit is truncated to 0.
        const auto inside =
            (xPlace > -frame.xStep) & (xPlace < frame.xEnd) & (yPlace > -frame.yStep) & (yPlace < frame.yEnd);
        store(x + i, toInts(inside ? xPlace * xPositions : outside));
        store(y + i, toInts(inside ? yPlace * yPositions : outside));
    }
}

Terms termsOf(const LensFrame& frame) {
    if (frame.horizontalDecentering == 0 && frame.verticalDecentering == 0 && frame.horizontalPrism == 0 &&
        frame.verticalPrism == 0)
        return Terms::Bend;
    constexpr double one = 65536;
    constexpr double largest = 2147483647.0;
    const double product = (frame.halfWidth / one + 1) / 10 * ((frame.halfHeight / one + 1) / 10);
    return 2 * product * one < largest ? Terms::Small : Terms::All;
}

void place(const LensFrame& frame, const LensColumns& offsets, const LensOffset& row, std::int32_t* x,
           std::int32_t* y, std::int32_t columns) {
    switch (termsOf(frame)) {
        case Terms::Bend: return placeBlocks<Terms::Bend>(frame, offsets, row, x, y, columns);
        case Terms::Small: return placeBlocks<Terms::Small>(frame, offsets, row, x, y, columns);
        case Terms::All: return placeBlocks<Terms::All>(frame, offsets, row, x, y, columns);
    }
}

}  // namespace

const LensDistortionKernels lensDistortionKernels{place};

}  // namespace VIREO_KERNEL_NAMESPACE
