// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_COLOR_COLOR_PASS_KERNELS_H
#define VIREO_FILTERS_COLOR_COLOR_PASS_KERNELS_H

#include "host/mtkcore/instruction_set.h"

#include <cstdint>

struct ColorPassSelection {
    std::uint32_t color;     ///< As a pixel; its alpha does not count.
    std::uint8_t tolerance;  ///< The largest difference of a channel that is still near.
    bool greysNear;          ///< Near pixels turn grey instead of the others.
};

struct ColorPassKernels {
    /// Turns to grey what the selection says of `width` pixels, alpha kept.
    void (*row)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
                const ColorPassSelection& selection);
};

VIREO_KERNEL_TABLES(ColorPassKernels, colorPassKernels)

#endif
