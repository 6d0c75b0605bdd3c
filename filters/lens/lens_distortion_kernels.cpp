// SPDX-License-Identifier: MIT
// Fixed-point arithmetic in doubles: whole numbers below 2^53 and their products are exact there.
#include "filters/lens/lens_distortion_kernels.h"

#include <cmath>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

/// Truncated toward zero.
double whole(double value) { return static_cast<double>(static_cast<std::int32_t>(value)); }

/// The same, limited as the fixed point is: what lies below 32 bits becomes one more than the least of them.
double saturated(double value) {
    constexpr double largest = 2147483647.0;
    value = value < largest ? value : largest;
    value = value > -largest - 2 ? value : -largest;
    return whole(value);
}

void place(const LensFrame& frame, const LensColumns& offsets, const LensOffset& row,
           std::int32_t* __restrict x, std::int32_t* __restrict y, std::int32_t columns) {
    const double* squared = offsets.squared;
    const double* tenth = offsets.tenth;
    const double* hundredthSquared = offsets.hundredthSquared;
    const double* rounded = offsets.rounded;
    const double* curved = offsets.curved;
    // Copies, since the compiler cannot know that the positions do not overwrite them.
    const LensFrame f = frame;
    const LensOffset r = row;
    constexpr double fraction = 1.0 / 65536;
    const double rowTenth = r.tenth * fraction;
    const double rowCurved = r.curved * fraction;
    const double xPositions = 1 / (256 * f.xStep);
    const double yPositions = 1 / (256 * f.yStep);
    for (std::int32_t i = 0; i < columns; ++i) {
        const double radius = whole(std::sqrt(squared[i] + r.squared) * 65536);
        const double relativeRadius = whole(radius * f.perRadius);
        const double product = saturated(2 * saturated(tenth[i] * rowTenth));
        const double squares = whole((r.hundredthSquared + hundredthSquared[i]) * f.perRadius);
        const double xPlace = saturated(saturated(product * f.horizontalDecentering) * f.perNorm) +
                              saturated(curved[i] * (relativeRadius * fraction)) +
                              saturated(saturated(f.verticalDecentering * squares) * 10000) +
                              saturated(f.verticalPrism * radius) + rounded[i] + f.halfWidth;
        const double yPlace = saturated(saturated(product * f.verticalDecentering) * f.perNorm) +
                              saturated(rowCurved * relativeRadius) +
                              saturated(saturated(f.horizontalDecentering * squares) * 10000) +
                              saturated(f.horizontalPrism * radius) + r.rounded + f.halfHeight;
        // A position short of 0 by less than its last bit is truncated to 0.
        const bool inside = (xPlace > -f.xStep) & (xPlace < f.xEnd) & (yPlace > -f.yStep) & (yPlace < f.yEnd);
        x[i] = static_cast<std::int32_t>(inside ? xPlace * xPositions : -1.0);
        y[i] = static_cast<std::int32_t>(inside ? yPlace * yPositions : -1.0);
    }
}

}  // namespace

const LensDistortionKernels lensDistortionKernels{place};

}  // namespace VIREO_KERNEL_NAMESPACE
