// SPDX-License-Identifier: MIT
#include "host/fxkit/fxkit.h"

#include "host/fxkit/gaussian_blur.h"
#include "host/hosting/worker_threads.h"

#include <algorithm>

void FX_GaussianBlur(const void* source, int32_t sourceRowBytes, int32_t sourceWidth, int32_t sourceHeight,
                     int32_t, void* destination, int32_t destinationRowBytes, int32_t destinationWidth,
                     int32_t destinationHeight, int32_t, double rx, double ry, int32_t, int32_t, int32_t,
                     int32_t) {
    FxKit::gaussianBlur(blurKernelsTables.chosen(),
                        {static_cast<const std::uint8_t*>(source), sourceRowBytes,
                         static_cast<std::uint8_t*>(destination), destinationRowBytes,
                         std::min(sourceWidth, destinationWidth), std::min(sourceHeight, destinationHeight)},
                        rx, ry, hosting::lentWorkers());
}
