// SPDX-License-Identifier: MIT
#include "filters/lens/horizontal_flip_kernels.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

struct Unit16 {
    std::uint64_t halves[2];
};

template <class Pixel>
void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) {
    constexpr std::int64_t size = sizeof(Pixel);
    for (std::int64_t i = 0; i < width; ++i) {
        Pixel pixel;
        std::memcpy(&pixel, source + size * (width - 1 - i), sizeof pixel);
        std::memcpy(destination + size * i, &pixel, sizeof pixel);
    }
}

}  // namespace

const HorizontalFlipKernels horizontalFlipKernels{row<std::uint32_t>, row<std::uint64_t>, row<Unit16>};

}  // namespace VIREO_KERNEL_NAMESPACE
