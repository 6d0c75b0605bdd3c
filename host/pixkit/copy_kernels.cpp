// SPDX-License-Identifier: MIT
#include "host/pixkit/copy_kernels.h"

#include "simd/bytes.h"
#include "simd/pixels.h"
#include "simd/words.h"

#include <cstring>
#include <type_traits>
#include <utility>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// The quotient by 255, rounded to the nearest. One more than the dividend with half of 255, times 257 /
/// 65536, truncates to the same, as long as the quotient is a byte.
constexpr std::uint8_t blendedByte(std::uint8_t source, std::uint8_t destination, std::uint32_t weight) {
    return static_cast<std::uint8_t>((source * weight + destination * (255 - weight) + 128) * 257 >> 16);
}

#if defined(VIREO_SIMD_COMPLETE)
/// The same for a register of bytes. The products are of weights without and bytes with a sign: bytes less
/// 128 make sums less 128 * 255, to which 128 * 256 restore the dividend, and the 128 that are added to it.
class BlendedBytes {
public:
    explicit BlendedBytes(std::uint32_t weight)
        : weights_((Bytes)broadcast<Words>(static_cast<std::uint16_t>(weight | (255 - weight) << 8))) {}

    Bytes operator()(Bytes source, Bytes destination) const {
        source ^= 0x80;
        destination ^= 0x80;
        return packus(quotients255(unpacklo(source, destination)),
                      quotients255(unpackhi(source, destination)));
    }

private:
    SignedWords quotients255(Bytes pairs) const {
        return (SignedWords)mulhi((Words)maddubs(weights_, (SignedBytes)pairs) ^ 0x8000,
                                  broadcast<Words>(257));
    }

    Bytes weights_;
};
#endif

void blend(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes, std::uint32_t weight) {
    std::int64_t i = 0;
#if defined(VIREO_SIMD_COMPLETE)
    const BlendedBytes blended(weight);
    constexpr auto lanes = static_cast<std::int64_t>(sizeof(Bytes));
    for (; i + lanes <= bytes; i += lanes) {
        prefetchAhead<lanes>(source + i);
        prefetchAhead<lanes>(destination + i);
        store(destination + i, blended(load<Bytes>(source + i), load<Bytes>(destination + i)));
    }
#endif
    for (; i < bytes; ++i) destination[i] = blendedByte(source[i], destination[i], weight);
}

/// Two bytes of a pixel in halves of a word, where sums of up to 16 x 16 of them have room.
constexpr std::uint32_t evenBytes = 0x00FF00FF;

constexpr std::int64_t boxBlock = 1024;  // Source pixels whose column sums are kept at a time.

/// Columns of a box's rows summed, even and odd bytes apart.
struct ColumnSums {
    std::uint32_t even[boxBlock];
    std::uint32_t odd[boxBlock];

    void sum(const std::uint8_t* source, std::ptrdiff_t rowBytes, std::int32_t rows, std::int64_t pixels) {
        for (std::int64_t x = 0; x < pixels; ++x) even[x] = odd[x] = 0;
        for (std::int32_t y = 0; y < rows; ++y, source += rowBytes) {
            for (std::int64_t x = 0; x < pixels; ++x) {
                std::uint32_t pixel;
                std::memcpy(&pixel, source + 4 * x, 4);
                even[x] += pixel & evenBytes;
                odd[x] += pixel >> 8 & evenBytes;
            }
        }
    }
};

/// Divides sums of a box's bytes.
struct BoxDivisor {
    std::uint32_t half;
    std::uint32_t reciprocal;  // Of 2^24, rounded up: exact for sums up to 256 boxes of 255.

    explicit BoxDivisor(std::uint32_t pixels)
        : half(pixels / 2), reciprocal(((1U << 24) + pixels - 1) / pixels) {}

    std::uint32_t mean(std::uint32_t sum) const { return ((sum & 0xFFFF) + half) * reciprocal >> 24; }

    std::uint32_t pixel(std::uint32_t even, std::uint32_t odd) const {
        return mean(even) | mean(odd) << 8 | mean(even >> 16) << 16 | mean(odd >> 16) << 24;
    }
};

/// Joins the columns of each box. The sums go elsewhere, or the loop could not be vectorised.
template <class Width>
void joinColumns(const ColumnSums& columns, Width across, ColumnSums& boxes, std::int64_t count) {
    for (std::int64_t x = 0; x < count; ++x) {
        std::uint32_t even = 0;
        std::uint32_t odd = 0;
        for (std::int32_t i = 0; i < across; ++i) {
            even += columns.even[x * across + i];
            odd += columns.odd[x * across + i];
        }
        boxes.even[x] = even;
        boxes.odd[x] = odd;
    }
}

/// A width that the compiler knows.
template <std::int32_t width>
using Known = std::integral_constant<std::int32_t, width>;

/// Each pixel of two registers in a row added to its neighbour, for the pixels of one register.
template <int... i>
Words addedNeighbours(Words first, Words second, std::integer_sequence<int, i...>) {
    return (Words)__builtin_shufflevector((Pixels)first, (Pixels)second, 2 * i...) +
           (Words)__builtin_shufflevector((Pixels)first, (Pixels)second, 2 * i + 1 ...);
}

/// The means of boxes of 2 x 2 pixels, as many as fill whole registers. Returns how many.
std::int64_t quarterMeans(const std::uint8_t* source, std::ptrdiff_t rowBytes, std::uint8_t* destination,
                          std::int64_t count) {
    std::int64_t x = 0;
    for (; x + vectorPixels <= count; x += vectorPixels) {
        const auto at = [&](int row, int half) {
            return load<Words>(source + row * rowBytes + 8 * x + half * vectorBytes);
        };
        const Words rows[2][2] = {{at(0, 0), at(0, 1)}, {at(1, 0), at(1, 1)}};
        Words even[2];
        Words odd[2];
        for (int half = 0; half < 2; ++half) {
            even[half] = (rows[0][half] & 0xFF) + (rows[1][half] & 0xFF);
            odd[half] = (rows[0][half] >> 8) + (rows[1][half] >> 8);
        }
        const Words means = (addedNeighbours(even[0], even[1], lanesOf<Pixels>) + 2) >> 2 |
                            (addedNeighbours(odd[0], odd[1], lanesOf<Pixels>) + 2) >> 2 << 8;
        store(destination + 4 * x, means);
    }
    return x;
}

void boxMeans(const std::uint8_t* source, std::ptrdiff_t rowBytes, std::int32_t across, std::int32_t down,
              std::uint8_t* destination, std::int64_t count) {
    if (across == 2 && down == 2) {
        const std::int64_t done = quarterMeans(source, rowBytes, destination, count);
        source += 8 * done;
        destination += 4 * done;
        count -= done;
    }
    const BoxDivisor divisor(static_cast<std::uint32_t>(across * down));
    const std::int64_t blockBoxes = boxBlock / across;
    ColumnSums columns;
    ColumnSums boxes;
    while (count > 0) {
        const std::int64_t block = count < blockBoxes ? count : blockBoxes;
        columns.sum(source, rowBytes, down, block * across);
        switch (across) {
            case 2: joinColumns(columns, Known<2>{}, boxes, block); break;
            case 3: joinColumns(columns, Known<3>{}, boxes, block); break;
            case 4: joinColumns(columns, Known<4>{}, boxes, block); break;
            default: joinColumns(columns, across, boxes, block);
        }
        for (std::int64_t x = 0; x < block; ++x) {
            const std::uint32_t pixel = divisor.pixel(boxes.even[x], boxes.odd[x]);
            std::memcpy(destination + 4 * x, &pixel, 4);
        }
        source += 4 * block * across;
        destination += 4 * block;
        count -= block;
    }
}

void addRow(const std::uint8_t* source, float weight, float* sums, std::int64_t samples) {
    for (std::int64_t i = 0; i < samples; ++i) sums[i] += static_cast<float>(source[i]) * weight;
}

void sumDown(const std::uint8_t* source, std::ptrdiff_t rowBytes, const RunWeights& weights, float* sums,
             std::int64_t samples) {
    for (std::int64_t i = 0; i < samples; ++i) sums[i] = static_cast<float>(source[i]) * weights.head;
    if (weights.count == 1) return;
    for (std::int32_t row = 1; row < weights.count - 1; ++row) {
        addRow(source + row * rowBytes, weights.body, sums, samples);
    }
    addRow(source + (weights.count - 1) * rowBytes, weights.tail, sums, samples);
}

/// The four channels of a pixel; compilers do not find these loops' width by themselves.
using FourFloats = Vector<float, 16>;
using FourDoubles = Vector<double, 32>;
using FourInts = Vector<std::int32_t, 16>;

void add(FourDoubles& sum, const float* channels, double weight) {
    sum += __builtin_convertvector(load<FourFloats>(channels), FourDoubles) * weight;
}

constexpr std::int64_t meanBlock = 64;

void meanAcross(const float* sums, const PixelRun* runs, double rowsTotal, std::uint8_t* destination,
                std::int64_t count) {
    // Both reciprocals err by a rounding; a little more than that above the quotient, the truncated product
    // is exact for totals up to 2^32.
    const double rowsReciprocal = (1 + 0x1p-50) / rowsTotal;
    while (count > 0) {
        const std::int64_t pixels = count < meanBlock ? count : meanBlock;
        std::int32_t means[4 * meanBlock];
        for (std::int64_t x = 0; x < pixels; ++x) {
            const PixelRun& run = runs[x];
            const float* from = sums + 4 * std::ptrdiff_t{run.first};
            FourDoubles sum = FourDoubles{} + run.total * rowsTotal / 2;
            add(sum, from, run.weights.head);
            for (std::int32_t i = 1; i < run.weights.count - 1; ++i) add(sum, from + 4 * i, run.weights.body);
            if (run.weights.count > 1) add(sum, from + 4 * (run.weights.count - 1), run.weights.tail);
            store(means + 4 * x, __builtin_convertvector(sum * (run.reciprocal * rowsReciprocal), FourInts));
        }
        for (std::int64_t i = 0; i < 4 * pixels; ++i) destination[i] = static_cast<std::uint8_t>(means[i]);
        runs += pixels;
        destination += 4 * pixels;
        count -= pixels;
    }
}

}  // namespace

const CopyKernels copyKernels{blend, boxMeans, sumDown, meanAcross};

}  // namespace VIREO_KERNEL_NAMESPACE
