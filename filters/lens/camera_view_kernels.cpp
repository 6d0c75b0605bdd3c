// SPDX-License-Identifier: MIT
#include "filters/lens/camera_view_kernels.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

void place(const CameraRow& row, std::int32_t* __restrict x, std::int32_t* __restrict y,
           std::int32_t columns) {
    // Copies, since the compiler cannot know that the positions do not overwrite them.
    const auto [a, b, c, d, e, f, g, h] = row.mapping;
    const std::int32_t first = row.firstColumn;
    const std::int32_t step = row.xStep;
    const double Y = static_cast<double>(std::int64_t{row.row} * row.yStep);
    const double bY = b * Y;
    const double eY = e * Y;
    const double hY = h * Y;
    // The fixed point of old projects has 16 bits behind the point and truncates toward zero, so that what
    // lies less than its last bit left of or above the picture is inside.
    const double xScale = 256.0 / row.xStep;
    const double yScale = 256.0 / row.yStep;
    constexpr double begin = -1.0 / 256;
    const double xEnd = row.width * 256.0;
    const double yEnd = row.height * 256.0;
    for (std::int32_t i = 0; i < columns; ++i) {
        const double X = static_cast<double>((first + i) * step);
        const double w = g * X + hY + 1;
        const double xPlace = (a * X + bY + c) / w * xScale;
        const double yPlace = (d * X + eY + f) / w * yScale;
        const bool inside = (xPlace > begin) & (xPlace < xEnd) & (yPlace > begin) & (yPlace < yEnd);
        x[i] = static_cast<std::int32_t>(inside ? xPlace : -1.0);
        y[i] = static_cast<std::int32_t>(inside ? yPlace : -1.0);
    }
}

}  // namespace

const CameraViewKernels cameraViewKernels{place};

}  // namespace VIREO_KERNEL_NAMESPACE
