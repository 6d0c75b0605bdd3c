// SPDX-License-Identifier: MIT
#include "engine/pixels/reduced_depth.h"

#include <algorithm>

namespace vireo {
namespace {

template <class Sample>
void reduce(const Sample* from, const float* dither, std::uint8_t* to, std::ptrdiff_t width, float scale,
            float highest) {
    for (std::ptrdiff_t i = 0; i < 4 * width; ++i) {
        const auto given = static_cast<float>(from[i]);
        const float limited = given > 0 ? std::min(given, highest) : 0;  // no number is 0, too
        to[i] = static_cast<std::uint8_t>(std::min(limited * scale + dither[i / 4], 255.0F));
    }
}

}  // namespace

void rowToBytes(SampleDepth depth, const void* bgra, const float* dither, std::uint8_t* bytes,
                std::ptrdiff_t width) {
    if (depth == SampleDepth::Sixteen) {
        reduce(static_cast<const std::uint16_t*>(bgra), dither, bytes, width, 255.0F / 65535, 65535);
    } else {
        reduce(static_cast<const float*>(bgra), dither, bytes, width, 255, 1);
    }
}

void rowFromBytes(SampleDepth depth, const std::uint8_t* bytes, void* bgra, std::ptrdiff_t width) {
    if (depth == SampleDepth::Sixteen) {
        std::transform(bytes, bytes + 4 * width, static_cast<std::uint16_t*>(bgra),
                       [](std::uint8_t byte) { return static_cast<std::uint16_t>(byte * 257); });
    } else {
        std::transform(bytes, bytes + 4 * width, static_cast<float*>(bgra),
                       [](std::uint8_t byte) { return static_cast<float>(byte) / 255; });
    }
}

}  // namespace vireo
