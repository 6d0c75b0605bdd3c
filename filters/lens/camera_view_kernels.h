// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_LENS_CAMERA_VIEW_KERNELS_H
#define VIREO_FILTERS_LENS_CAMERA_VIEW_KERNELS_H

#include "filters/lens/camera_projection.h"
#include "simd/kernel_tables.h"

#include <cstdint>

/// A run of columns of one row, and the picture that they map to.
struct CameraRow {
    QuadMapping mapping;
    std::int32_t xStep;  ///< Also what a distance across is divided by in the picture.
    std::int32_t yStep;
    std::int32_t firstColumn;
    std::int32_t row;
    std::int32_t width;  ///< Of the picture, in pixels.
    std::int32_t height;
};

struct CameraViewKernels {
    /// Writes the positions of `columns` columns in 1/256 pixel; x and y are -1 for one outside the picture
    /// or without a place at all.
    void (*place)(const CameraRow& row, std::int32_t* x, std::int32_t* y, std::int32_t columns);
};

VIREO_KERNEL_TABLES(CameraViewKernels, cameraViewKernels)

#endif
