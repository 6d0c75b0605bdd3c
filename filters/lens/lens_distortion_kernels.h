// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_LENS_DISTORTION_KERNELS_H
#define VIREO_FILTERS_LENS_LENS_DISTORTION_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

/// What a frame's pixels share. Whole numbers in doubles; positions, half sizes and ends are 16.16.
struct LensFrame {
    double horizontalDecentering;  ///< 1.0 is 1, as in the prisms.
    double verticalDecentering;
    double horizontalPrism;
    double verticalPrism;
    double perRadius;  ///< lensReciprocal of the radius in pixels.
    double perNorm;    ///< 65536 times that of the decentering's norm.
    double halfWidth;
    double halfHeight;
    double xStep;
    double yStep;
    double xEnd;  ///< Where the picture ends, like positions before they are divided by the steps.
    double yEnd;
};

/// What depends on the distance from the centre along one axis, 16.16 but for `squared`.
struct LensOffset {
    double squared;           ///< Of the distance, in pixels.
    double tenth;             ///< Of the distance.
    double hundredthSquared;  ///< Three times it for columns.
    double rounded;           ///< The distance again, after the divisions.
    double curved;            ///< The curvature times that.
};

/// LensOffset of many columns.
struct LensColumns {
    const double* squared;
    const double* tenth;
    const double* hundredthSquared;
    const double* rounded;
    const double* curved;
};

/// A factor that divides by a whole number: the truncated product with any whole number is the truncated
/// quotient, as long as divisor and dividend together stay below 2^49. It is larger than the reciprocal by
/// less than the distance from any quotient to the next whole number, and by more than rounding takes away.
constexpr double lensReciprocal(double divisor) { return 1 / divisor * (1 + 0x1p-50); }

/// Kernels read and write columns in blocks of so many.
inline constexpr std::int32_t lensColumnBlock = 8;

struct LensDistortionKernels {
    /// Writes the positions of `columns` columns of a row, and of those up to the end of a block, in 1/256
    /// pixel, -1 outside the picture. Exact while squared distances add up to less than 2^25, radius and norm
    /// are not 0 and none of the lens's terms is larger than 1.0.
    void (*place)(const LensFrame& frame, const LensColumns& offsets, const LensOffset& row, std::int32_t* x,
                  std::int32_t* y, std::int32_t columns);
};

VIREO_KERNEL_TABLES(LensDistortionKernels, lensDistortionKernels)

#endif
