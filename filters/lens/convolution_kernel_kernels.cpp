// SPDX-License-Identifier: MIT
#include "filters/lens/convolution_kernel_kernels.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

void copyAlpha(const PixelRow& row) {
    const auto [source, destination, width, pastCaches] = row;
    for (std::int64_t i = 0; i < width; ++i) {
        std::uint32_t from, to;
        std::memcpy(&from, source + 4 * i, 4);
        std::memcpy(&to, destination + 4 * i, 4);
        to = (from & 0xFF000000) | (to & 0x00FFFFFF);
        std::memcpy(destination + 4 * i, &to, 4);
    }
}

}  // namespace

const ConvolutionKernelKernels convolutionKernelKernels{copyAlpha};

}  // namespace VIREO_KERNEL_NAMESPACE
