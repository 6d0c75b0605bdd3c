// SPDX-License-Identifier: MIT
#include "host/fxkit/channel_services.h"

#include <algorithm>

namespace FxKit {

void applyChannelTables(const void* source, void* destination, std::int32_t rowBytes, std::int32_t width,
                        std::int32_t height, const std::uint8_t* red, const std::uint8_t* green,
                        const std::uint8_t* blue) {
    for (std::int32_t y = 0; y < height; ++y) {
        const auto* from = static_cast<const std::uint8_t*>(source) + std::int64_t{y} * rowBytes;
        auto* to = static_cast<std::uint8_t*>(destination) + std::int64_t{y} * rowBytes;
        for (std::int32_t x = 0; x < width; ++x, from += 4, to += 4) {
            to[0] = blue[from[0]];
            to[1] = green[from[1]];
            to[2] = red[from[2]];
            to[3] = from[3];
        }
    }
}

void convolve3x3(const void* source, void* destination, const std::int16_t record[11], std::int32_t rowBytes,
                 std::int32_t width, std::int32_t height) {
    const int offset = record[9];
    const int scale = record[10] == 0 ? 1 : record[10];
    const auto* pixels = static_cast<const std::uint8_t*>(source);
    auto* result = static_cast<std::uint8_t*>(destination);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            for (int channel = 0; channel < 4; ++channel) {
                int sum = 0;
                for (int row = 0; row < 3; ++row) {
                    for (int column = 0; column < 3; ++column) {
                        const std::int64_t fromY = std::clamp(y + 1 - row, 0, height - 1);
                        const std::int64_t fromX = std::clamp(x + column - 1, 0, width - 1);
                        sum += record[3 * row + column] * pixels[fromY * rowBytes + 4 * fromX + channel];
                    }
                }
                result[std::int64_t{y} * rowBytes + 4 * x + channel] =
                    static_cast<std::uint8_t>(std::clamp(sum / scale + offset, 0, 255));
            }
        }
    }
}

}  // namespace FxKit
