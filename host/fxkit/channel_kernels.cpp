// SPDX-License-Identifier: MIT
#include "host/fxkit/channel_kernels.h"

#include "host/fxkit/byte_tables.h"
#if defined(__SSE2__) || defined(__wasm_simd128__)
#include "host/fxkit/byte_lanes.h"
#endif

namespace VIREO_KERNEL_NAMESPACE {
namespace {

void applyTables(const std::uint8_t* source, std::uint8_t* destination, std::ptrdiff_t rowBytes,
                 std::int64_t width, std::int64_t height, const std::uint8_t* const tables[3]) {
    const ByteTables byteTables(tables);
    for (std::int64_t y = 0; y < height; ++y) {
        byteTables.row(source + y * rowBytes, destination + y * rowBytes, width);
    }
}

int rowSum(const std::uint8_t* row, std::int64_t i, const std::int16_t weights[3]) {
    return weights[0] * row[i] + weights[1] * row[i + 4] + weights[2] * row[i + 8];
}

void convolveAny(const std::uint8_t* const rows[3], std::uint8_t* __restrict destination, std::int64_t count,
                 const Convolution& convolution) {
    const std::uint8_t* row0 = rows[0];
    const std::uint8_t* row1 = rows[1];
    const std::uint8_t* row2 = rows[2];
    const Convolution local = convolution;
    const double scale = local.scale;
    for (std::int64_t i = 0; i < count; ++i) {
        const int sum = rowSum(row0, i, local.weights[0]) + rowSum(row1, i, local.weights[1]) +
                        rowSum(row2, i, local.weights[2]);
        // Doubles divide such numbers exactly enough to be cut.
        const int value = static_cast<int>(sum / scale) + local.offset;
        destination[i] = static_cast<std::uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
    }
}

#if defined(__SSE2__) || defined(__wasm_simd128__)

/// Two weights for the two bytes of a pair.
Bytes pairOf(int first, int second) { return repeatedWord((first & 0xFF) | (second & 0xFF) << 8); }

/// Sums of 32 bits from the five pairs of bytes that make a neighbourhood, less the last one's partner.
void sums(const Bytes words[5], Bytes result[2]) {
    const Bytes zero = repeatedWord(0);
    result[0] = added32(added32(addedPairs(interleavedLow16(words[0], words[1])),
                                addedPairs(interleavedLow16(words[2], words[3]))),
                        addedPairs(interleavedLow16(words[4], zero)));
    result[1] = added32(added32(addedPairs(interleavedHigh16(words[0], words[1])),
                                addedPairs(interleavedHigh16(words[2], words[3]))),
                        addedPairs(interleavedHigh16(words[4], zero)));
}

void convolveSmall(const std::uint8_t* const rows[3], std::uint8_t* destination, std::int64_t count,
                   const Convolution& convolution) {
    constexpr std::int64_t lanes = sizeof(Bytes);
    const auto& w = convolution.weights;
    const Bytes weights[5] = {pairOf(w[0][0], w[0][1]), pairOf(w[0][2], w[1][0]), pairOf(w[1][1], w[1][2]),
                              pairOf(w[2][0], w[2][1]), pairOf(w[2][2], 0)};
    const Bytes offset = repeatedWord(convolution.offset);
    // Half of one, added to the dividend away from 0, keeps the quotient so far from whole numbers that the
    // rounding of the reciprocal and the product cannot carry it past one while dividends stay below 2^22.
    const float reciprocal = 1.0F / static_cast<float>(convolution.scale);
    for (std::int64_t i = 0; i < count; i += lanes) {
        const auto at = [&](int row, int column) { return loadBytes(rows[row] + i + 4 * column); };
        const Bytes first[5] = {at(0, 0), at(0, 2), at(1, 1), at(2, 0), at(2, 2)};
        const Bytes second[5] = {at(0, 1), at(1, 0), at(1, 2), at(2, 1), repeatedWord(0)};
        Bytes low[5];
        Bytes high[5];
        for (int pair = 0; pair < 5; ++pair) {
            low[pair] = weighedPairs(interleavedLow8(first[pair], second[pair]), weights[pair]);
            high[pair] = weighedPairs(interleavedHigh8(first[pair], second[pair]), weights[pair]);
        }
        Bytes dividends[4];
        sums(low, dividends);
        sums(high, dividends + 2);
        Bytes words[2];
        for (int half = 0; half < 2; ++half) {
            words[half] = addedSaturated16(joined32(quotients(dividends[2 * half], reciprocal),
                                                    quotients(dividends[2 * half + 1], reciprocal)),
                                           offset);
        }
        const Bytes result = joined16(words[0], words[1]);
        if (count - i >= lanes) {
            storeBytes(destination + i, result);
        } else {
            std::uint8_t rest[lanes];
            storeBytes(rest, result);
            std::memcpy(destination + i, rest, static_cast<std::size_t>(count - i));
        }
    }
}

#else

constexpr auto convolveSmall = convolveAny;

#endif

}  // namespace

const ChannelKernels channelKernels{applyTables, convolveSmall, convolveAny};

}  // namespace VIREO_KERNEL_NAMESPACE
