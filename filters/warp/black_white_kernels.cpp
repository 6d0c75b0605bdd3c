// SPDX-License-Identifier: MIT
#include "filters/warp/black_white_kernels.h"

#include "simd/bytes.h"
#include "simd/floats.h"
#include "simd/pixels.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// A byte in place of the three colours of each pixel.
Pixels repeatedBytes(Pixels bytes) {
#if defined(VIREO_SIMD_SHUFFLE)
    const Bytes places =
        bytesByPlace([](int i) { return static_cast<std::uint8_t>(i % 4 == 3 ? 0x80 : i % 16 / 4 * 4); });
    return (Pixels)shuffle((Bytes)bytes, places);
#else
    return bytes | bytes << 8 | bytes << 16;
#endif
}

/// greyPixel of every lane. Colours become numbers where they stand in the pixel; their weights are as many
/// powers of two smaller, to the same digits.
Pixels greyPixels(Pixels pixels) {
    const auto color = [&](std::uint32_t mask) { return toFloats((Ints)(pixels & mask)); };
    const Floats sum =
        ((0.299f * 0x1p-16f * color(0xFF0000) + 0.587f * 0x1p-8f * color(0xFF00)) + 0.114f * color(0xFF)) +
        0.5f;
    return (pixels & 0xFF000000) | repeatedBytes((Pixels)toInts(sum));
}

void grey(const PixelRow& row) {
    mapPixels(row, [](Pixels pixels) { return greyPixels(pixels); });
}

void neutralChroma(const PixelRow& row) {
    mapPixels(row, [](Pixels pixels) { return (pixels & 0xFFFF0000) | 0x8080; });
}

}  // namespace

const BlackWhiteKernels blackWhiteKernels{grey, neutralChroma};

}  // namespace VIREO_KERNEL_NAMESPACE
