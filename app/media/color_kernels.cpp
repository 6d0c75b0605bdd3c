// SPDX-License-Identifier: MIT
#include "app/media/color_kernels.h"

#include "simd/floats.h"
#include "simd/gather.h"
#include "simd/ints.h"

namespace vireo::VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

constexpr std::int64_t lanes = laneCount<Floats>;

template <class Sample>
void repeat(const Sample* half, Sample* full, std::int64_t width) {
    for (std::int64_t i = 0; i < width / 2; ++i) {
        full[2 * i] = half[i];
        full[2 * i + 1] = half[i];
    }
    if (width % 2 != 0) full[width - 1] = half[width / 2];
}

/// Of pairs of columns the left ones and the right ones.
template <class V>
struct Columns {
    V left, right;
};

Columns<Ints> loadPairs(const std::uint8_t* samples) {
    const auto pairs = (Pixels)loadExtended(reinterpret_cast<const std::int16_t*>(samples));
    return {(Ints)(pairs & 0xFF), (Ints)(pairs >> 8 & 0xFF)};
}

Columns<Ints> loadPairs(const std::uint16_t* samples) {
    const auto pairs = load<Pixels>(samples);
    return {(Ints)(pairs & 0xFFFF), (Ints)(pairs >> 16)};
}

Ints loadEach(const std::uint8_t* samples) { return loadExtended(samples); }

Ints loadEach(const std::uint16_t* samples) {
    return loadExtended(reinterpret_cast<const std::int16_t*>(samples)) & 0xFFFF;
}

#if defined(__AVX512VBMI__)

// Of columns packed in pairs, every 16 bytes hold left ones, then right ones. One shuffle brings two such
// vectors in order.

template <int half, int... i>
Bytes inOrder(Bytes blueRed, Bytes greenAlpha, std::integer_sequence<int, i...>) {
    constexpr auto place = [](int byte) {
        const int x = 16 * half + byte / 4, channel = byte % 4;
        return x / 8 * 16 + x % 2 * 4 + x % 8 / 2 + channel / 2 * 8 + channel % 2 * 64;
    };
    return __builtin_shufflevector(blueRed, greenAlpha, place(i)...);
}

void storePixels(std::uint8_t* bgra, Bytes blueRed, Bytes greenAlpha) {
    store(bgra, inOrder<0>(blueRed, greenAlpha, lanesOf<Bytes>));
    store(bgra + 64, inOrder<1>(blueRed, greenAlpha, lanesOf<Bytes>));
}

/// Pixels 0, 1, 8, 9 in the first 16 bytes, and so on, as unpacking wants them.
template <int half, int... i>
Pixels inOrder(Words first, Words second, std::integer_sequence<int, i...>) {
    constexpr auto place = [](int word) {
        const int x = 16 * half + word / 8 * 2 + word / 2 % 2 + word / 4 % 2 * 8;
        return x / 8 * 8 + x % 2 * 4 + x % 8 / 2 + word % 2 * 32;
    };
    return (Pixels)__builtin_shufflevector(first, second, place(i)...);
}

template <int half>
void storePixels(std::uint16_t* bgra, Words blue, Words green, Words red, Words alpha) {
    const Pixels blueGreen = inOrder<half>(blue, green, lanesOf<Words>);
    const Pixels redAlpha = inOrder<half>(red, alpha, lanesOf<Words>);
    store(bgra + 64 * half, unpacklo(blueGreen, redAlpha));
    store(bgra + 64 * half + 32, unpackhi(blueGreen, redAlpha));
}

void storePixels(std::uint16_t* bgra, Words blue, Words green, Words red, Words alpha) {
    storePixels<0>(bgra, blue, green, red, alpha);
    storePixels<1>(bgra, blue, green, red, alpha);
}

#else

/// Vectors whose 16 bytes come by turns.
template <class... V>
void storeByTurns(void* address, V... vectors) {
    auto* const bytes = static_cast<std::uint8_t*>(address);
    int part = 0;
#if defined(__AVX2__)
    (store(bytes + 16 * part++, lowerHalf(vectors)), ...);
    (store(bytes + 16 * part++, upperHalf(vectors)), ...);
#else
    (store(bytes + 16 * part++, vectors), ...);
#endif
}

void storePixels(std::uint8_t* bgra, Bytes blueRed, Bytes greenAlpha) {
    const auto blueGreen = (Words)unpacklo(blueRed, greenAlpha);
    const auto redAlpha = (Words)unpackhi(blueRed, greenAlpha);
    const auto left = (Pixels)unpacklo(blueGreen, redAlpha), right = (Pixels)unpackhi(blueGreen, redAlpha);
    storeByTurns(bgra, unpacklo(left, right), unpackhi(left, right));
}

void storePixels(std::uint16_t* bgra, Words blue, Words green, Words red, Words alpha) {
    using Wide = Vector<std::uint64_t>;
    const auto leftBlueGreen = (Pixels)unpacklo(blue, green), leftRedAlpha = (Pixels)unpacklo(red, alpha);
    const auto rightBlueGreen = (Pixels)unpackhi(blue, green), rightRedAlpha = (Pixels)unpackhi(red, alpha);
    const auto left02 = (Wide)unpacklo(leftBlueGreen, leftRedAlpha);
    const auto left46 = (Wide)unpackhi(leftBlueGreen, leftRedAlpha);
    const auto right13 = (Wide)unpacklo(rightBlueGreen, rightRedAlpha);
    const auto right57 = (Wide)unpackhi(rightBlueGreen, rightRedAlpha);
    storeByTurns(bgra, unpacklo(left02, right13), unpackhi(left02, right13), unpacklo(left46, right57),
                 unpackhi(left46, right57));
}

#endif

/// Whole numbers: channels of pixels, or sums of some.
struct Colours {
    Ints b, g, r;
};

Colours operator+(const Colours& first, const Colours& second) {
    return {first.b + second.b, first.g + second.g, first.r + second.r};
}

/// Values below 0 and above what a channel holds become its ends.
void storeBlock(std::uint8_t* bgra, const Columns<Colours>& c, const Columns<Ints>& alpha) {
    storePixels(bgra, packus(packs(c.left.b, c.right.b), packs(c.left.r, c.right.r)),
                packus(packs(c.left.g, c.right.g), packs(alpha.left, alpha.right)));
}

void storeBlock(std::uint16_t* bgra, const Columns<Colours>& c, const Columns<Ints>& alpha) {
    storePixels(bgra, packus(c.left.b, c.right.b), packus(c.left.g, c.right.g), packus(c.left.r, c.right.r),
                packus(alpha.left, alpha.right));
}

/// From a pattern of eight columns, what is added before cutting to whole numbers.
Columns<Floats> loadPattern(const float* pattern) {
    Columns<Floats> added;
    for (int i = 0; i < lanes; ++i) {
        added.left[i] = pattern[2 * i % 8];
        added.right[i] = pattern[(2 * i + 1) % 8];
    }
    return added;
}

template <class Sample>
Colours coloursOf(Ints y, Ints u, Ints v, const YuvToRgb& by, const Floats& rounding) {
    const Floats luma = by.luma * toFloats(y);
    const auto whole = [&](const Floats& sum, float offset) {
        // Of bytes the test of all of them shows that one sum of constants gives the same channels.
        if constexpr (sizeof(Sample) == 1) return toInts(sum + (offset + 0.5F));
        return toInts(sum + offset + rounding);
    };
    return {whole(luma + by.blueU * toFloats(u), by.blue),
            whole(luma + by.greenU * toFloats(u) + by.greenV * toFloats(v), by.green),
            whole(luma + by.redV * toFloats(v), by.red)};
}

template <class Sample, class Channel, bool isHalved, bool hasAlpha>
inline void unpackBlock(const Sample* ys, const Sample* us, const Sample* vs, const Sample* as, Channel* bgra,
                        const YuvToRgb& by, const Columns<Floats>& rounding) {
    const Columns<Ints> y = loadPairs(ys);
    Columns<Ints> u, v, alpha;
    if constexpr (isHalved) {
        u.left = u.right = loadEach(us);
        v.left = v.right = loadEach(vs);
    } else {
        u = loadPairs(us);
        v = loadPairs(vs);
    }
    if constexpr (hasAlpha) {
        const Columns<Ints> a = loadPairs(as);
        alpha = {toInts(by.alpha * toFloats(a.left) + rounding.left),
                 toInts(by.alpha * toFloats(a.right) + rounding.right)};
    } else {
        alpha.left = alpha.right = broadcast<Ints>(sizeof(Channel) == 1 ? 255 : 65535);
    }
    storeBlock(bgra,
               {coloursOf<Sample>(y.left, u.left, v.left, by, rounding.left),
                coloursOf<Sample>(y.right, u.right, v.right, by, rounding.right)},
               alpha);
}

/// A block that the row ends in, with room for all of its columns.
template <class Value, std::int64_t count>
struct Rest {
    Value values[count] = {};

    Rest(const Value* row, std::int64_t present) {
        std::memcpy(values, row, sizeof(Value) * static_cast<std::size_t>(present));
    }
};

template <class Sample, class Channel, bool isHalved, bool hasAlpha>
void unpackRow(const YuvRow<Sample>& row, Channel* bgra, std::int64_t width, const YuvToRgb& coefficients,
               const Columns<Floats>& rounding) {
    constexpr std::int64_t step = 2 * lanes, chromaStep = isHalved ? lanes : step;
    const YuvToRgb by = coefficients;
    const auto [ys, us, vs, as, isRowHalved] = row;
    const auto block = [&](const Sample* y, const Sample* u, const Sample* v, const Sample* a, Channel* to) {
        unpackBlock<Sample, Channel, isHalved, hasAlpha>(y, u, v, a, to, by, rounding);
    };
    std::int64_t x = 0, c = 0;
    for (; x + step <= width; x += step, c += chromaStep) {
        block(ys + x, us + c, vs + c, hasAlpha ? as + x : nullptr, bgra + 4 * x);
    }
    if (x == width) return;
    const std::int64_t rest = width - x, chromaRest = isHalved ? (rest + 1) / 2 : rest;
    const Rest<Sample, step> y(ys + x, rest), u(us + c, chromaRest), v(vs + c, chromaRest),
        a(hasAlpha ? as + x : ys + x, rest);
    Channel pixels[4 * step];
    block(y.values, u.values, v.values, a.values, pixels);
    std::memcpy(bgra + 4 * x, pixels, sizeof(Channel) * static_cast<std::size_t>(4 * rest));
}

template <class Sample, class Channel>
void unpack(const YuvRow<Sample>& row, Channel* bgra, std::int64_t width, const YuvToRgb& by,
            const float* dither) {
    const auto rounding = loadPattern(dither);
    if (row.isHalved) {
        if (row.a == nullptr) {
            unpackRow<Sample, Channel, true, false>(row, bgra, width, by, rounding);
        } else {
            unpackRow<Sample, Channel, true, true>(row, bgra, width, by, rounding);
        }
    } else if (row.a == nullptr) {
        unpackRow<Sample, Channel, false, false>(row, bgra, width, by, rounding);
    } else {
        unpackRow<Sample, Channel, false, true>(row, bgra, width, by, rounding);
    }
}

constexpr float halves[8] = {0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.5F, 0.5F};

void unpack8(const YuvRow<std::uint8_t>& row, std::uint8_t* bgra, std::int64_t width, const YuvToRgb& by) {
    unpack(row, bgra, width, by, halves);
}

void unpackDeep(const YuvRow<std::uint16_t>& row, std::uint16_t* bgra, std::int64_t width,
                const YuvToRgb& by) {
    unpack(row, bgra, width, by, halves);
}

/// Channels of bytes stay where they stand in a pixel.
Colours loadColours(const std::uint8_t* bgra) {
    const auto pixels = load<Pixels>(bgra);
    return {(Ints)(pixels & 0xFF), (Ints)(pixels & 0xFF00), (Ints)(pixels & 0xFF0000)};
}

/// Coefficients for loaded channels, of which `count` are summed: divided by powers of two, so that nothing
/// is rounded otherwise.
template <class Channel>
RgbToYuv coefficientsFor(RgbToYuv by, float count) {
    constexpr float green = sizeof(Channel) == 1 ? 0x1p8F : 1, red = sizeof(Channel) == 1 ? 0x1p16F : 1;
    for (float* coefficient : {&by.lumaB, &by.uB, &by.vB}) *coefficient /= count;
    for (float* coefficient : {&by.lumaG, &by.uG, &by.vG}) *coefficient /= count * green;
    for (float* coefficient : {&by.lumaR, &by.uR, &by.vR}) *coefficient /= count * red;
    return by;
}

/// Blue and green, and red and alpha, of a vector of pixels.
PixelPairs loadHalves(const std::uint16_t* bgra) {
    return separated(load<Pixels>(bgra), load<Pixels>(bgra + 2 * lanes), lanesOf<Pixels>);
}

Colours loadColours(const std::uint16_t* bgra) {
    const auto [blueGreen, redAlpha] = loadHalves(bgra);
    return {(Ints)(blueGreen & 0xFFFF), (Ints)(blueGreen >> 16), (Ints)(redAlpha & 0xFFFF)};
}

Ints loadAlpha(const std::uint8_t* bgra) { return (Ints)(load<Pixels>(bgra) >> 24); }

Ints loadAlpha(const std::uint16_t* bgra) { return (Ints)(loadHalves(bgra).right >> 16); }

Ints sumOfNeighbours(Ints first, Ints second) {
    const auto [left, right] = separated((Pixels)first, (Pixels)second, lanesOf<Pixels>);
    return (Ints)(left + right);
}

/// Of two rows and one or two columns for each lane.
template <std::int64_t columns, class Channel>
Colours loadSums(const Channel* above, const Channel* below) {
    const Colours first = loadColours(above) + loadColours(below);
    if constexpr (columns == 1) return first;
    const Colours second = loadColours(above + 4 * lanes) + loadColours(below + 4 * lanes);
    return {sumOfNeighbours(first.b, second.b), sumOfNeighbours(first.g, second.g),
            sumOfNeighbours(first.r, second.r)};
}

/// Two channels at a time, each in half of a lane.
template <>
Colours loadSums<2>(const std::uint8_t* above, const std::uint8_t* below) {
    constexpr std::uint32_t evenBytes = 0x00FF00FF;
    Ints blueRed[2], green[2];
    for (int i = 0; i < 2; ++i) {
        const auto first = load<Pixels>(above + 4 * lanes * i), second = load<Pixels>(below + 4 * lanes * i);
        blueRed[i] = (Ints)((first & evenBytes) + (second & evenBytes));
        green[i] = (Ints)((first & 0xFF00) + (second & 0xFF00));
    }
    const Ints sums = sumOfNeighbours(blueRed[0], blueRed[1]);
    return {sums & 0xFFFF, sumOfNeighbours(green[0], green[1]), sums & 0x7FFF0000};
}

Ints weighted(const Colours& c, float red, float green, float blue, float offset) {
    return toInts(red * toFloats(c.r) + green * toFloats(c.g) + blue * toFloats(c.b) + offset);
}

/// Vectors of samples that are stored at a time.
constexpr int group = 4;

/// Lanes of vectors that were packed, where every 16 bytes hold some of each.
template <int each, class V, int... i>
V inOrder(V packed, std::integer_sequence<int, i...>) {
#if defined(__AVX2__)
    constexpr int size = sizeof(V) / 16;
    constexpr auto place = [](int lane) {
        return lane / each % size * 4 + lane / each / size * each + lane % each;
    };
    return permute(packed, Ints{place(i)...});
#else
    return packed;
#endif
}

void storeSamples(std::uint8_t* samples, const Ints (&values)[group], const RgbToYuv&) {
    const Bytes packed = packus(packs(values[0], values[1]), packs(values[2], values[3]));
    store(samples, inOrder<1>((Pixels)packed, lanesOf<Pixels>));
}

void storeSamples(std::uint16_t* samples, const Ints (&values)[group], const RgbToYuv& by) {
    const Words highest = broadcast<Words>(static_cast<std::uint16_t>(by.highest));
    for (int i = 0; i < group; i += 2) {
        const Words packed = packus(values[i], values[i + 1]);
        store(samples + lanes * i,
              inOrder<2>((Pixels)(packed < highest ? packed : highest), lanesOf<Pixels>));
    }
}

/// Calls block(columns of two rows of pixels, samples of two planes), each with room for a group of vectors
/// of samples. The last column of a width that is no multiple of `columnsASample` stands for what lacks.
template <std::int64_t columnsASample, class Channel, class Sample, class Block>
inline void packRows(const Channel* above, const Channel* below, Sample* first, Sample* second,
                     std::int64_t width, Block block) {
    constexpr std::int64_t step = columnsASample * group * lanes;
    std::int64_t x = 0;
    for (; x + step <= width; x += step) {
        block(above + 4 * x, below + 4 * x, first + x / columnsASample, second + x / columnsASample);
    }
    if (x == width) return;
    const std::int64_t columns = width - x, samples = (columns + columnsASample - 1) / columnsASample;
    Rest<Channel, 4 * step> restAbove(above + 4 * x, 4 * columns), restBelow(below + 4 * x, 4 * columns);
    for (Rest<Channel, 4 * step>* rest : {&restAbove, &restBelow}) {
        if (columns < samples * columnsASample)
            std::memcpy(rest->values + 4 * columns, rest->values + 4 * (columns - 1), 4 * sizeof(Channel));
    }
    Sample ends[2][group * lanes];
    block(restAbove.values, restBelow.values, ends[0], ends[1]);
    const std::size_t bytes = sizeof(Sample) * static_cast<std::size_t>(samples);
    std::memcpy(first + x / columnsASample, ends[0], bytes);
    if (second != first) std::memcpy(second + x / columnsASample, ends[1], bytes);
}

template <class Channel, class Sample>
void luma(const Channel* bgra, Sample* ys, std::int64_t width, const RgbToYuv& by) {
    const auto m = coefficientsFor<Channel>(by, 1);
    packRows<1>(bgra, bgra, ys, ys, width, [&m](const Channel* pixels, const Channel*, Sample* y, Sample*) {
        Ints values[group];
        for (int i = 0; i < group; ++i)
            values[i] = weighted(loadColours(pixels + 4 * lanes * i), m.lumaR, m.lumaG, m.lumaB, m.luma);
        storeSamples(y, values, m);
    });
}

template <class Channel, class Sample>
void alpha(const Channel* bgra, Sample* as, std::int64_t width, const RgbToYuv& by) {
    const RgbToYuv m = by;
    packRows<1>(bgra, bgra, as, as, width, [&m](const Channel* pixels, const Channel*, Sample* a, Sample*) {
        Ints values[group];
        for (int i = 0; i < group; ++i)
            values[i] = toInts(m.alpha * toFloats(loadAlpha(pixels + 4 * lanes * i)) + 0.5F);
        storeSamples(a, values, m);
    });
}

/// `columns` times two rows make a sample.
template <std::int64_t columns, class Channel, class Sample>
inline void packChroma(const Channel* above, const Channel* below, Sample* us, Sample* vs, std::int64_t width,
                       const RgbToYuv& by) {
    const auto m = coefficientsFor<Channel>(by, 2 * columns);
    packRows<columns>(above, below, us, vs, width,
                      [&m](const Channel* first, const Channel* second, Sample* u, Sample* v) {
                          Ints uValues[group], vValues[group];
                          for (int i = 0; i < group; ++i) {
                              const std::int64_t offset = 4 * columns * lanes * i;
                              const Colours sums = loadSums<columns>(first + offset, second + offset);
                              uValues[i] = weighted(sums, m.uR, m.uG, m.uB, m.u);
                              vValues[i] = weighted(sums, m.vR, m.vG, m.vB, m.v);
                          }
                          storeSamples(u, uValues, m);
                          storeSamples(v, vValues, m);
                      });
}

template <class Channel, class Sample>
constexpr PackKernels<Channel, Sample> packKernels{luma<Channel, Sample>, alpha<Channel, Sample>,
                                                   packChroma<1, Channel, Sample>,
                                                   packChroma<2, Channel, Sample>};

bool hasAll(const std::uint8_t* row, std::int64_t bytes, std::uint64_t bits) {
    using Eights = Vector<std::uint64_t>;
    constexpr std::int64_t step = sizeof(Eights);
    const auto wanted = broadcast<Eights>(bits);
    Eights all = wanted;
    std::int64_t i = 0;
    for (; i + step <= bytes; i += step) all &= load<Eights>(row + i);
    auto rest = broadcast<Eights>(~std::uint64_t{0});
    std::memcpy(&rest, row + i, static_cast<std::size_t>(bytes - i));
    all &= rest;
    for (int lane = 0; lane < laneCount<Eights>; ++lane) bits &= all[lane];
    return bits == wanted[0];
}

}  // namespace

const ColorKernels colorKernels{
    repeat<std::uint8_t>,
    repeat<std::uint16_t>,
    unpack8,
    unpack<std::uint16_t, std::uint8_t>,
    unpackDeep,
    packKernels<std::uint8_t, std::uint8_t>,
    packKernels<std::uint8_t, std::uint16_t>,
    packKernels<std::uint16_t, std::uint8_t>,
    packKernels<std::uint16_t, std::uint16_t>,
    hasAll,
};

}  // namespace vireo::VIREO_KERNEL_NAMESPACE
