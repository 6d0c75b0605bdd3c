// SPDX-License-Identifier: MIT
// Fixed-point arithmetic in doubles: whole numbers below 2^53 and their products are exact there. Only the
// product of the two distances can leave 32 bits. Every other term is bounded by the frame's size, since the
// distances are at most what radius and norm were made of, and the lens's terms are 1.0 at most.
#include "filters/lens/lens_distortion_kernels.h"

#include "filters/lens/double_vectors.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

/// Truncated and limited as the fixed point is: what lies below 32 bits becomes one more than the least of
/// them.
DoubleVector saturated(DoubleVector values) {
    constexpr double largest = 2147483647.0;
    const DoubleVector most = DoubleVector{} + largest;
    values = values < most ? values : most;
    return whole(values > -largest - 2 ? values : -most);
}

void place(const LensFrame& frame, const LensColumns& offsets, const LensOffset& row, std::int32_t* x,
           std::int32_t* y, std::int32_t columns) {
    static_assert(lensColumnBlock % vectorDoubles == 0);
    constexpr double fraction = 1.0 / 65536;
    const double xPositions = 1 / (256 * frame.xStep);
    const double yPositions = 1 / (256 * frame.yStep);
    const DoubleVector outside = DoubleVector{} - 1;
    for (std::int32_t i = 0; i < columns; i += vectorDoubles) {
        const DoubleVector radius = whole(squareRoot(loadDoubles(offsets.squared + i) + row.squared) * 65536);
        const DoubleVector relativeRadius = whole(radius * frame.perRadius);
        const DoubleVector product =
            saturated(2 * saturated(loadDoubles(offsets.tenth + i) * (row.tenth * fraction)));
        const DoubleVector squares =
            whole((row.hundredthSquared + loadDoubles(offsets.hundredthSquared + i)) * frame.perRadius);
        const DoubleVector xPlace = whole(whole(product * frame.horizontalDecentering) * frame.perNorm) +
                                    whole(loadDoubles(offsets.curved + i) * (relativeRadius * fraction)) +
                                    whole(frame.verticalDecentering * squares) * 10000 +
                                    whole(frame.verticalPrism * radius) + loadDoubles(offsets.rounded + i) +
                                    frame.halfWidth;
        const DoubleVector yPlace = whole(whole(product * frame.verticalDecentering) * frame.perNorm) +
                                    whole(row.curved * (relativeRadius * fraction)) +
                                    whole(frame.horizontalDecentering * squares) * 10000 +
                                    whole(frame.horizontalPrism * radius) + row.rounded + frame.halfHeight;
        // A position short of 0 by less than its last bit is truncated to 0.
        const auto inside =
            (xPlace > -frame.xStep) & (xPlace < frame.xEnd) & (yPlace > -frame.yStep) & (yPlace < frame.yEnd);
        const HalfIntVector xs = truncated(inside ? xPlace * xPositions : outside);
        const HalfIntVector ys = truncated(inside ? yPlace * yPositions : outside);
        std::memcpy(x + i, &xs, sizeof xs);
        std::memcpy(y + i, &ys, sizeof ys);
    }
}

}  // namespace

const LensDistortionKernels lensDistortionKernels{place};

}  // namespace VIREO_KERNEL_NAMESPACE
