// SPDX-License-Identifier: MIT
#include "filters/warp/extract_kernels.h"

#include "framework/luma_vectors.h"
#include "simd/lookup.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// Four vectors of pixels have their luminances in one vector, the first in the low byte of each lane.
constexpr int groupVectors = 4;
constexpr int groupBytes = groupVectors * vectorBytes;

/// Where bytes are looked up one by one, enough groups for the first to have left the store buffer when they
/// are read again as a vector.
constexpr int blockGroups = looksVectorsUp ? 1 : 16;

void row(const PixelRow& row, const TransferCurve& curve) {
    const LumaVectors lumaOf(lumaWeight2, lumaWeight1, lumaWeight0);
    const ByteTable keyOf(curve.data());
    mapBlocks<blockGroups * groupBytes / 4>(
        row, [&](const std::uint8_t* source, std::uint8_t* destination, const auto& put) {
            Pixels keys[blockGroups];
            for (int group = 0; group < blockGroups; ++group) {
                Pixels lumas{};
                for (int i = 0; i < groupVectors; ++i) {
                    lumas |= lumaOf(load<Pixels>(source + group * groupBytes + i * vectorBytes)) << 8 * i;
                }
                keys[group] = lumas;
            }
            lookUp(keyOf, reinterpret_cast<std::uint8_t*>(keys), sizeof keys);
            for (int group = 0; group < blockGroups; ++group) {
                for (int i = 0; i < groupVectors; ++i) {
                    const std::int64_t offset = group * groupBytes + i * vectorBytes;
                    const Pixels key = keys[group] >> 8 * i & 0xFF;
                    const Pixels alpha = load<Pixels>(source + offset) & 0xFF000000;
                    put(destination + offset, alpha | key << 16 | key << 8 | key);
                }
            }
        });
}

}  // namespace

const ExtractKernels extractKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
