// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_LINES_H
#define VIREO_HOST_PIXKIT_LINES_H

#include "host/pixkit/axis_scale.h"
#include "host/pixkit/line_kernels.h"

namespace PixKit {

/// Whether growLine takes the axis.
inline bool growsByLine(const AxisScale& axis) {
    return axis.grows() && 2 * axis.bodyWeight() <= largestLineUnit;
}

/// Makes the pixels axis.written() of a line from those of axis.read().
void growLine(const SourceLine& source, const DestinationLine& destination, const AxisScale& axis);

}  // namespace PixKit

#endif
