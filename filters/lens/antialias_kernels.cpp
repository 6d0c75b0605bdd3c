// SPDX-License-Identifier: MIT
#include "filters/lens/antialias_kernels.h"

#include "filters/lens/antialias_average.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

void row(const std::uint8_t* up, const std::uint8_t* centre, const std::uint8_t* down,
         std::uint8_t* destination, std::int64_t width) {
    const auto at = [](const std::uint8_t* pixels, std::int64_t i) {
        std::uint32_t pixel;
        std::memcpy(&pixel, pixels + 4 * i, 4);
        return pixel;
    };
    for (std::int64_t i = 0; i < width; ++i) {
        std::uint32_t average = halfway(at(centre, i - 1), at(centre, i));
        average = halfway(average, at(centre, i + 1));
        average = halfway(average, at(up, i));
        average = halfway(average, at(down, i));
        std::memcpy(destination + 4 * i, &average, 4);
    }
}

}  // namespace

const AntialiasKernels antialiasKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
