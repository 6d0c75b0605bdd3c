// SPDX-License-Identifier: MIT
#include "host/fxkit/channel_kernels.h"

#include "simd/floats.h"
#include "simd/lookup.h"
#include "simd/past_caches.h"
#include "simd/words.h"

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

void applyTables(const std::uint8_t* source, std::uint8_t* destination, std::ptrdiff_t rowBytes,
                 std::int64_t width, std::int64_t height, const std::uint8_t* const tables[3]) {
    const PixelTables pixelTables(tables);
    const bool pastCaches = goesPastCaches(source, destination, 4 * width, height);
    for (std::int64_t y = 0; y < height; ++y) {
        pixelTables.row({source + y * rowBytes, destination + y * rowBytes, width, pastCaches});
    }
    if (pastCaches) fencePastCaches();
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

#if defined(VIREO_SIMD_COMPLETE)

/// Two weights for the two bytes of a pair.
SignedBytes pairOf(int first, int second) {
    return (SignedBytes)broadcast<Words>(static_cast<std::uint16_t>((first & 0xFF) | (second & 0xFF) << 8));
}

/// Sums of 32 bits from the five pairs of bytes that make a neighbourhood, less the last one's partner.
void sums(const SignedWords words[5], Ints result[2]) {
    const auto zero = SignedWords{};
    const auto one = broadcast<SignedWords>(1);
    result[0] = madd(unpacklo(words[0], words[1]), one) + madd(unpacklo(words[2], words[3]), one) +
                madd(unpacklo(words[4], zero), one);
    result[1] = madd(unpackhi(words[0], words[1]), one) + madd(unpackhi(words[2], words[3]), one) +
                madd(unpackhi(words[4], zero), one);
}

/// Half of one, added to the dividend away from 0, keeps the quotient so far from whole numbers that the
/// rounding of the reciprocal and the product cannot carry it past one while dividends stay below 2^22.
Ints quotients(Ints dividends, float reciprocal) {
    const Floats values = toFloats(dividends);
    const Floats half =
        (Floats)(((Ints)values & (Ints)broadcast<Floats>(-0.0F)) | (Ints)broadcast<Floats>(0.5F));
    return toInts((values + half) * reciprocal);
}

void convolveSmall(const std::uint8_t* const rows[3], std::uint8_t* destination, std::int64_t count,
                   const Convolution& convolution) {
    constexpr std::int64_t lanes = sizeof(Bytes);
    const auto& w = convolution.weights;
    const SignedBytes weights[5] = {pairOf(w[0][0], w[0][1]), pairOf(w[0][2], w[1][0]),
                                    pairOf(w[1][1], w[1][2]), pairOf(w[2][0], w[2][1]), pairOf(w[2][2], 0)};
    const auto offset = broadcast<SignedWords>(static_cast<std::int16_t>(convolution.offset));
    const float reciprocal = 1.0F / static_cast<float>(convolution.scale);
    for (std::int64_t i = 0; i < count; i += lanes) {
        const auto at = [&](int row, int column) { return load<Bytes>(rows[row] + i + 4 * column); };
        const Bytes first[5] = {at(0, 0), at(0, 2), at(1, 1), at(2, 0), at(2, 2)};
        const Bytes second[5] = {at(0, 1), at(1, 0), at(1, 2), at(2, 1), Bytes{}};
        SignedWords low[5];
        SignedWords high[5];
        for (int pair = 0; pair < 5; ++pair) {
            low[pair] = maddubs(unpacklo(first[pair], second[pair]), weights[pair]);
            high[pair] = maddubs(unpackhi(first[pair], second[pair]), weights[pair]);
        }
        Ints dividends[4];
        sums(low, dividends);
        sums(high, dividends + 2);
        SignedWords words[2];
        for (int half = 0; half < 2; ++half) {
            words[half] = adds(packs(quotients(dividends[2 * half], reciprocal),
                                     quotients(dividends[2 * half + 1], reciprocal)),
                               offset);
        }
        const Bytes result = packus(words[0], words[1]);
        if (count - i >= lanes) {
            store(destination + i, result);
        } else {
            std::memcpy(destination + i, &result, static_cast<std::size_t>(count - i));
        }
    }
}

#else

constexpr auto convolveSmall = convolveAny;

#endif

}  // namespace

const ChannelKernels channelKernels{applyTables, convolveSmall, convolveAny};

}  // namespace VIREO_KERNEL_NAMESPACE
