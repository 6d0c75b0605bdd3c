// SPDX-License-Identifier: MIT
#include "host/fxkit/channel_services.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

namespace FxKit {
namespace {

const ChannelKernels& chosenKernels = channelKernelsTables.chosen();

/// Copies a row of `width` pixels with its first and last pixel repeated outward.
void copyWidened(const std::uint8_t* row, std::uint8_t* widened, std::int64_t width) {
    std::memcpy(widened, row, 4);
    std::memcpy(widened + 4, row, static_cast<std::size_t>(4 * width));
    std::memcpy(widened + 4 + 4 * width, row + 4 * (width - 1), 4);
}

}  // namespace

void applyChannelTables(const void* source, void* destination, std::int32_t rowBytes, std::int32_t width,
                        std::int32_t height, const std::uint8_t* red, const std::uint8_t* green,
                        const std::uint8_t* blue) {
    if (width <= 0) return;  // Kernels take widths of whole rows; a rectangle may be inverted.
    const std::uint8_t* const tables[3] = {blue, green, red};
    chosenKernels.applyTables(static_cast<const std::uint8_t*>(source),
                              static_cast<std::uint8_t*>(destination), rowBytes, width, height, tables);
}

void convolve3x3(const void* source, void* destination, const std::int16_t record[11], std::int32_t rowBytes,
                 std::int32_t width, std::int32_t height) {
    convolve3x3(chosenKernels, static_cast<const std::uint8_t*>(source),
                static_cast<std::uint8_t*>(destination), record, rowBytes, width, height);
}

void convolve3x3(const ChannelKernels& kernels, const std::uint8_t* source, std::uint8_t* destination,
                 const std::int16_t record[11], std::int64_t rowBytes, std::int64_t width,
                 std::int64_t height) {
    if (width <= 0 || height <= 0) return;
    Convolution convolution;
    std::memcpy(convolution.weights, record, sizeof(convolution.weights));
    convolution.offset = record[9];
    convolution.scale = record[10] == 0 ? 1 : record[10];
    const auto convolve = fitsSmall(convolution) ? kernels.convolveSmall : kernels.convolveAny;
    try {
        // Three rows are kept aside: they have their edges repeated, and the destination may be the source.
        const std::int64_t widenedBytes = 4 * (width + 2);
        std::vector<std::uint8_t> memory(static_cast<std::size_t>(3 * widenedBytes + 64));
        const auto widened = [&](std::int64_t y) { return memory.data() + y % 3 * widenedBytes; };
        copyWidened(source, widened(0), width);
        for (std::int64_t y = 0; y < height; ++y) {
            const std::int64_t next = std::min(y + 1, height - 1);
            const std::int64_t previous = std::max<std::int64_t>(y - 1, 0);
            if (next > y) copyWidened(source + next * rowBytes, widened(next), width);
            const std::uint8_t* const rows[3] = {widened(next), widened(y), widened(previous)};
            convolve(rows, destination + y * rowBytes, 4 * width, convolution);
        }
    } catch (const std::bad_alloc&) {
        for (std::int64_t y = 0; y < height; ++y) {
            std::memmove(destination + y * rowBytes, source + y * rowBytes,
                         static_cast<std::size_t>(4 * width));
        }
    }
}

}  // namespace FxKit
