// SPDX-License-Identifier: MIT
#include "bridges/openfx/proxy.h"

#include <cstring>
#include <type_traits>

namespace openfx {
namespace {

int samplesOf(const VireoFrame& frame) { return frame.layout == VireoRgb ? 3 : 4; }

std::size_t pixelBytesOf(const VireoFrame& frame) {
    return static_cast<std::size_t>(samplesOf(frame) * frame.depth / 8);
}

std::uint8_t* rowOf(const VireoFrame& frame, int y) {
    return static_cast<std::uint8_t*>(frame.pixels) + y * frame.stride;
}

/// Where the pixels begin that repeat a small picture's.
int begin(int small, int smallSize, int largeSize) {
    return static_cast<int>(std::int64_t{small} * largeSize / smallSize);
}

template <class Sample>
void reduceSamples(const VireoFrame& large, const VireoFrame& small) {
    using Sum = std::conditional_t<std::is_floating_point_v<Sample>, double, std::uint64_t>;
    const int samples = samplesOf(small);
    for (int y = 0; y < small.height; ++y) {
        const int top = begin(y, small.height, large.height),
                  bottom = begin(y + 1, small.height, large.height);
        for (int x = 0; x < small.width; ++x) {
            const int left = begin(x, small.width, large.width),
                      right = begin(x + 1, small.width, large.width);
            const Sum count = static_cast<Sum>(right - left) * static_cast<Sum>(bottom - top);
            for (int sample = 0; sample < samples; ++sample) {
                Sum sum = std::is_floating_point_v<Sample> ? Sum{0} : count / 2;
                for (int row = top; row < bottom; ++row) {
                    const auto* const from = reinterpret_cast<const Sample*>(rowOf(large, row)) + sample;
                    for (int column = left; column < right; ++column) sum += from[column * samples];
                }
                reinterpret_cast<Sample*>(rowOf(small, y))[x * samples + sample] =
                    static_cast<Sample>(sum / count);
            }
        }
    }
}

}  // namespace

Enlarged::Enlarged(const VireoFrame& small, int width, int height) : frame_(small) {
    const std::size_t pixelBytes = pixelBytesOf(small);
    const std::size_t rowBytes = pixelBytes * static_cast<std::size_t>(width);
    pixels_.resize(rowBytes * static_cast<std::size_t>(height));
    frame_.width = width;
    frame_.height = height;
    frame_.pixels = pixels_.data();
    frame_.stride = static_cast<std::int64_t>(rowBytes);
    for (int y = 0; y < small.height; ++y) {
        const int top = begin(y, small.height, height);
        std::uint8_t* const first = rowOf(frame_, top);
        for (int x = 0; x < small.width; ++x) {
            for (int to = begin(x, small.width, width); to < begin(x + 1, small.width, width); ++to) {
                std::memcpy(first + static_cast<std::size_t>(to) * pixelBytes,
                            rowOf(small, y) + static_cast<std::size_t>(x) * pixelBytes, pixelBytes);
            }
        }
        for (int to = top + 1; to < begin(y + 1, small.height, height); ++to)
            std::memcpy(rowOf(frame_, to), first, rowBytes);
    }
}

void reduce(const VireoFrame& large, const VireoFrame& small) {
    switch (small.depth) {
        case VireoDepth16: return reduceSamples<std::uint16_t>(large, small);
        case VireoDepthFloat: return reduceSamples<float>(large, small);
        default: return reduceSamples<std::uint8_t>(large, small);
    }
}

}  // namespace openfx
