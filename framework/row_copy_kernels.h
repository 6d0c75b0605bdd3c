// SPDX-License-Identifier: MIT
// Copies of rows, where one memcpy a row costs more than the memory.
#ifndef VIREO_FRAMEWORK_ROW_COPY_KERNELS_H
#define VIREO_FRAMEWORK_ROW_COPY_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

/// Source and destination do not overlap, unless they are the same: else the destination holds any bytes.
struct RowCopyKernels {
    void (*copy)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes);
    /// The same past the caches; fencePastCaches() follows the last row.
    void (*copyPastCaches)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes);
};

VIREO_KERNEL_TABLES(RowCopyKernels, rowCopyKernels)

#endif
