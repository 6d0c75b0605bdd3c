// SPDX-License-Identifier: MIT
// The two per-pixel services of the host's utility table.
#ifndef VIREO_HOST_FXKIT_CHANNEL_SERVICES_H
#define VIREO_HOST_FXKIT_CHANNEL_SERVICES_H

#include "host/fxkit/channel_kernels.h"

namespace FxKit {

/// Red, green and blue bytes through their tables of 256, alpha copied.
void applyChannelTables(const void* source, void* destination, std::int32_t rowBytes, std::int32_t width,
                        std::int32_t height, const std::uint8_t* red, const std::uint8_t* green,
                        const std::uint8_t* blue);

/// Each of the four bytes becomes trunc(sum / scale) + offset, limited to 0..255; a scale of 0 counts as 1;
/// edge pixels repeat outward. M11..M13 meet the picture row above, which is the next row in memory.
/// The destination may be the source. Without memory the picture is copied.
void convolve3x3(const void* source, void* destination, const std::int16_t record[11], std::int32_t rowBytes,
                 std::int32_t width, std::int32_t height);

/// convolve3x3 with the kernels named.
void convolve3x3(const ChannelKernels& kernels, const std::uint8_t* source, std::uint8_t* destination,
                 const std::int16_t record[11], std::int64_t rowBytes, std::int64_t width,
                 std::int64_t height);

}  // namespace FxKit

#endif
