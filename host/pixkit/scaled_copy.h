// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_SCALED_COPY_H
#define VIREO_HOST_PIXKIT_SCALED_COPY_H

#include "host/pixkit/axis_scale.h"
#include "host/pixkit/pixel_view.h"

namespace PixKit {

inline constexpr std::uint32_t fullWeight = 255;

/// The source's weight, of 255. Full weight is the plain copy.
struct Blend {
    std::uint32_t weight;

    bool replaces() const { return weight == fullWeight; }
};

/// Scales and blends what the two axes name; both write something. Source and destination do not overlap.
void scaledCopy(const PixelView& source, const PixelView& destination, const AxisScale& columns,
                const AxisScale& rows, Blend blend);

}  // namespace PixKit

#endif
