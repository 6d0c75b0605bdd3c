// SPDX-License-Identifier: MIT
// Rows of planar YUV to rows of BGRA and back, in single precision: exact to the rounding, and one formula
// for every matrix, range and depth.
#ifndef VIREO_APP_MEDIA_COLOR_KERNELS_H
#define VIREO_APP_MEDIA_COLOR_KERNELS_H

#include "simd/kernel_tables.h"

#include <cstdint>

namespace vireo {

/// Channels out of samples as they are stored, without rounding: red = luma·y + redV·v + red, and so on.
struct YuvToRgb {
    float luma;
    float redV, greenU, greenV, blueU;
    float red, green, blue;
    float alpha;
};

/// Samples out of channels as they are stored, rounding included: y = r·lumaR + g·lumaG + b·lumaB + luma, and
/// so on. `highest` limits them.
struct RgbToYuv {
    float lumaR, lumaG, lumaB, luma;
    float uR, uG, uB, u;
    float vR, vG, vB, v;
    float alpha;
    float highest;
};

template <class Sample>
struct YuvRow {
    const Sample* y;
    const Sample* u;
    const Sample* v;
    const Sample* a;        ///< Null: opaque.
    bool isHalved = false;  ///< A sample of u and v belongs to two columns.
};

/// From channels of BGRA to samples. Rows of chroma are means over two rows (which may be the same) and,
/// where halved, over two columns; the last column of an odd width stands for its neighbour.
template <class Channel, class Sample>
struct PackKernels {
    void (*luma)(const Channel* bgra, Sample* y, std::int64_t width, const RgbToYuv& by);
    void (*alpha)(const Channel* bgra, Sample* a, std::int64_t width, const RgbToYuv& by);
    void (*chroma)(const Channel* above, const Channel* below, Sample* u, Sample* v, std::int64_t width,
                   const RgbToYuv& by);
    void (*halfChroma)(const Channel* above, const Channel* below, Sample* u, Sample* v, std::int64_t width,
                       const RgbToYuv& by);
};

struct ColorKernels {
    /// Each of `width` / 2 samples (rounded up) twice.
    void (*repeat8)(const std::uint8_t* half, std::uint8_t* full, std::int64_t width);
    void (*repeat16)(const std::uint16_t* half, std::uint16_t* full, std::int64_t width);

    void (*unpack8)(const YuvRow<std::uint8_t>& row, std::uint8_t* bgra, std::int64_t width,
                    const YuvToRgb& by);
    /// `dither` is added before cutting to whole numbers: values from 0 to below 1 of eight columns, by
    /// turns.
    void (*unpack16)(const YuvRow<std::uint16_t>& row, std::uint8_t* bgra, std::int64_t width,
                     const YuvToRgb& by, const float* dither);
    void (*unpackDeep)(const YuvRow<std::uint16_t>& row, std::uint16_t* bgra, std::int64_t width,
                       const YuvToRgb& by);

    PackKernels<std::uint8_t, std::uint8_t> pack8;
    PackKernels<std::uint8_t, std::uint16_t> pack8Deep;
    PackKernels<std::uint16_t, std::uint8_t> pack16;
    PackKernels<std::uint16_t, std::uint16_t> pack16Deep;

    /// Whether every eight bytes of a row, of which the last may lack half, have all of the bits that are
    /// set.
    bool (*hasAll)(const std::uint8_t* row, std::int64_t bytes, std::uint64_t bits);
};

VIREO_KERNEL_TABLES(ColorKernels, colorKernels)

}  // namespace vireo

#endif
