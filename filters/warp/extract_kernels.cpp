// SPDX-License-Identifier: MIT
#include "filters/warp/extract_kernels.h"

#include "framework/luma_vectors.h"
#include "simd/lookup.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// Four vectors of pixels have their luminances in one vector, the first in the low byte of each lane.
constexpr std::int64_t groupVectors = 4;
constexpr std::int64_t groupBytes = groupVectors * vectorBytes;

/// Enough groups for the bytes of a look-up one by one to have left the store buffer when they are read again
/// as a vector.
constexpr std::int64_t blockGroups = 512 / vectorBytes;

void block(const std::uint8_t* source, std::uint8_t* destination, std::int64_t groups,
           const LumaVectors& lumaOf, const TransferCurve& curve) {
    Pixels keys[blockGroups];
    for (std::int64_t group = 0; group < groups; ++group) {
        Pixels lumas{};
        for (int i = 0; i < groupVectors; ++i) {
            lumas |= lumaOf(load<Pixels>(source + group * groupBytes + i * vectorBytes)) << 8 * i;
        }
        keys[group] = lumas;
    }
    lookup(curve.data(), reinterpret_cast<std::uint8_t*>(keys), groups * vectorBytes);
    for (std::int64_t group = 0; group < groups; ++group) {
        for (int i = 0; i < groupVectors; ++i) {
            const std::int64_t offset = group * groupBytes + i * vectorBytes;
            const Pixels key = keys[group] >> 8 * i & 0xFF;
            const Pixels alpha = load<Pixels>(source + offset) & 0xFF000000;
            store(destination + offset, alpha | key << 16 | key << 8 | key);
        }
    }
}

void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width,
         const TransferCurve& curve) {
    const LumaVectors lumaOf(lumaWeight2, lumaWeight1, lumaWeight0);
    const std::int64_t bytes = 4 * width;
    const std::int64_t rest = bytes % groupBytes;
    for (std::int64_t begin = 0; begin < bytes - rest; begin += blockGroups * groupBytes) {
        const std::int64_t groups = (bytes - rest - begin) / groupBytes;
        block(source + begin, destination + begin, groups < blockGroups ? groups : blockGroups, lumaOf,
              curve);
    }
    if (rest == 0) return;
    std::uint8_t end[groupBytes]{};
    std::memcpy(end, source + bytes - rest, static_cast<std::size_t>(rest));
    block(end, end, 1, lumaOf, curve);
    std::memcpy(destination + bytes - rest, end, static_cast<std::size_t>(rest));
}

}  // namespace

const ExtractKernels extractKernels{row};

}  // namespace VIREO_KERNEL_NAMESPACE
