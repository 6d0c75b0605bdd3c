// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_PIXKIT_COPY_KERNELS_H
#define VIREO_HOST_PIXKIT_COPY_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstddef>
#include <cstdint>

/// The weights of a run of `count` source rows or pixels: the first, those between, the last.
struct RunWeights {
    std::int32_t count;
    float head;
    float body;
    float tail;
};

/// What one destination pixel takes from a row of sums.
struct PixelRun {
    std::int32_t first;
    RunWeights weights;
    double total;
    double reciprocal;  // 1 / total
};

/// Rows of 4-byte pixels. Sums are whole numbers, exact in their floating-point types; every result is
/// rounded half up once.
struct CopyKernels {
    /// (source * weight + destination * (255 - weight) + 127) / 255 for each byte.
    void (*blend)(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes,
                  std::uint32_t weight);

    /// The means of `count` boxes side by side, each `across` by `down` pixels, both at most 16.
    void (*boxMeans)(const std::uint8_t* source, std::ptrdiff_t rowBytes, std::int32_t across,
                     std::int32_t down, std::uint8_t* destination, std::int64_t count);

    /// Weighted sums of the samples below one another in rows `rowBytes` apart.
    void (*sumDown)(const std::uint8_t* source, std::ptrdiff_t rowBytes, const RunWeights& weights,
                    float* sums, std::int64_t samples);

    /// Pixels out of such sums: each the weighted sum of its run, divided by its total times `rowsTotal`.
    void (*meanAcross)(const float* sums, const PixelRun* runs, double rowsTotal, std::uint8_t* destination,
                       std::int64_t count);
};

VIREO_KERNEL_TABLES(CopyKernels, copyKernels)

#endif
