// SPDX-License-Identifier: MIT
// The method is the sliding DCT-5: K. Sugimoto and S. Kamata, "Fast Gaussian filter with second-order shift
// property of DCT-5", IEEE International Conference on Image Processing, 2013.
#ifndef VIREO_HOST_FXKIT_GAUSSIAN_BLUR_H
#define VIREO_HOST_FXKIT_GAUSSIAN_BLUR_H

#include "host/fxkit/gaussian_blur_kernels.h"
#include "host/hosting/worker_threads.h"

namespace FxKit {

/// Two pictures of 4-byte pixels. Rows may run either way; the pictures may share memory.
struct BlurFrame {
    const std::uint8_t* source;
    std::int64_t sourceRowBytes;
    std::uint8_t* destination;
    std::int64_t destinationRowBytes;
    std::int64_t width;
    std::int64_t height;
};

/// FX_GaussianBlur with the kernels named, on the caller's thread and those of `workers`, with the same bytes
/// for any number of them. Without memory the picture is copied.
void gaussianBlur(const BlurKernels& kernels, const BlurFrame& frame, double reachAcross, double reachDown,
                  hosting::WorkerThreads* workers = nullptr);

}  // namespace FxKit

#endif
