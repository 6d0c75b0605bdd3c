// SPDX-License-Identifier: MIT
#ifndef VIREO_FILTERS_WARP_BLACK_WHITE_H
#define VIREO_FILTERS_WARP_BLACK_WHITE_H

#include "filters/warp/black_white_kernels.h"

namespace BlackWhite {

/// Which of the three equal "bgra" kernels runs: the processor's best where `best` is set, else the first
/// vector kernel or, without `vector`, the portable one.
struct KernelChoice {
    bool best = true;
    bool vector = true;
};

using RowKernel = decltype(BlackWhiteKernels::grey);

RowKernel greyKernel(const KernelChoice& choice);

}  // namespace BlackWhite

#endif
