// SPDX-License-Identifier: MIT
#include "engine/pixels/pixel_layout_kernels.h"

#include "simd/bytes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vireo::VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

/// Where blue, green, red and alpha stand in a pixel.
struct Order {
    int blue, green, red, alpha;
    bool hasAlpha;
};

constexpr Order orderOf(PixelLayout layout) {
    switch (layout) {
        case PixelLayout::Bgra: return {0, 1, 2, 3, true};
        case PixelLayout::Rgba: return {2, 1, 0, 3, true};
        case PixelLayout::Argb: return {3, 2, 1, 0, true};
        case PixelLayout::Abgr: return {1, 2, 3, 0, true};
        case PixelLayout::Bgrx: return {0, 1, 2, 3, false};
        case PixelLayout::Rgbx: return {2, 1, 0, 3, false};
        case PixelLayout::Xrgb: return {3, 2, 1, 0, false};
        case PixelLayout::Xbgr: return {1, 2, 3, 0, false};
        case PixelLayout::Bgr: return {0, 1, 2, -1, false};
        case PixelLayout::Rgb: return {2, 1, 0, -1, false};
        case PixelLayout::Grey: break;
    }
    return {0, 0, 0, -1, false};
}

template <class Sample>
constexpr Sample full = std::is_floating_point_v<Sample> ? Sample{1} : std::numeric_limits<Sample>::max();

/// Of equal colours the sum is that colour, whatever it is. That of words just fits.
std::uint32_t luma(std::uint32_t blue, std::uint32_t green, std::uint32_t red) {
    return (7471 * blue + 38470 * green + 19595 * red + 32768) >> 16;
}

float luma(float blue, float green, float red) {
    return green + 0.114F * (blue - green) + 0.299F * (red - green);
}

/// Samples of 8 or 16 bits, in words that hold a whole pixel. A colour above alpha counts as alpha: the
/// quotient would be limited. The three colours share one division: half a step above the dividend the
/// product is further from a whole number than it is rounded, in floats for bytes and in doubles for words.
std::uint32_t divided(std::uint32_t color, std::uint32_t alpha) {
    const std::uint32_t dividend = std::min(color, alpha) * 255 + alpha / 2;
    const float reciprocal = 1 / static_cast<float>(static_cast<std::int32_t>(std::max(alpha, 1U)));
    const float quotient = (static_cast<float>(static_cast<std::int32_t>(dividend)) + 0.5F) * reciprocal;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(quotient));
}

std::uint64_t divided(std::uint64_t color, std::uint64_t alpha) {
    // Signed numbers of 32 bits become doubles many at a time; the dividend fits in them less half their
    // range.
    constexpr std::uint32_t half = 0x80000000;
    const auto narrowColor = static_cast<std::uint32_t>(color),
               narrowAlpha = static_cast<std::uint32_t>(alpha);
    const std::uint32_t dividend = std::min(narrowColor, narrowAlpha) * 65535 + narrowAlpha / 2;
    const double reciprocal = 1 / static_cast<double>(static_cast<std::int32_t>(std::max(narrowAlpha, 1U)));
    const double quotient =
        (static_cast<double>(static_cast<std::int32_t>(dividend - half)) + (half + 0.5)) * reciprocal;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(quotient));
}

/// Divisions by 255 and 65535, rounded down, are sums and shifts.
template <class Word>
Word multiplied(Word color, Word alpha) {
    constexpr int bits = 2 * sizeof(Word);
    const Word product = color * alpha + ((Word{1} << (bits - 1)) - 1);
    return (product + 1 + (product >> bits)) >> bits;
}

float divided(float color, float alpha) { return alpha > 0 ? color / alpha : 0; }
float multiplied(float color, float alpha) { return color * alpha; }

#if defined(VIREO_SIMD_SHUFFLE)

/// Where the bytes of a 128-bit lane come from, and which of them are set. Between BGRA and a layout a lane
/// holds as many pixels as fill it with BGRA.
struct LaneShuffle {
    std::array<std::uint8_t, 16> from;
    std::array<std::uint8_t, 16> set;
};

template <PixelLayout layout, class Sample, bool isIn>
constexpr LaneShuffle laneShuffle() {
    constexpr Order order = orderOf(layout);
    constexpr int places[] = {order.blue, order.green, order.red, order.alpha};
    constexpr std::uint8_t none = 0x80;
    LaneShuffle lane{};
    lane.from.fill(none);
    for (int bgra = 0; bgra < 16; ++bgra) {
        const int size = sizeof(Sample), pixel = bgra / (4 * size), sample = bgra / size % 4;
        const int given = (pixel * samplesOf(layout) + places[sample]) * size + bgra % size;
        const bool isOpaque = sample == 3 && !order.hasAlpha;
        if (isIn || places[sample] >= 0) {
            const auto to = static_cast<std::size_t>(isIn ? bgra : given);
            if (isOpaque) {
                lane.set[to] = 0xFF;
            } else {
                lane.from[to] = static_cast<std::uint8_t>(isIn ? given : bgra);
            }
        }
    }
    return lane;
}

/// Moves the samples of as many pixels as fill registers and returns their number.
template <PixelLayout layout, class Sample, bool isIn>
std::ptrdiff_t shuffleSamples(const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t width) {
    static constexpr LaneShuffle lane = laneShuffle<layout, Sample, isIn>();
    constexpr std::ptrdiff_t lanePixels = 4 / sizeof(Sample);
    constexpr std::ptrdiff_t layoutBytes = lanePixels * samplesOf(layout) * std::ptrdiff_t{sizeof(Sample)};
    constexpr std::ptrdiff_t fromBytes = isIn ? layoutBytes : 16, toBytes = isIn ? 16 : layoutBytes;
    // Of layouts without a fourth sample a lane reaches into the next pixels.
    constexpr std::ptrdiff_t pixelsBehind = layoutBytes == 16 ? 0 : lanePixels / 2;

    using Lane = Vector<std::uint8_t, 16>;
    const auto places = load<Lane>(lane.from.data());
    const auto set = load<Lane>(lane.set.data());
    std::ptrdiff_t x = 0;
    // Wider registers and more of them at a time move memory no faster.
    for (; x + lanePixels + pixelsBehind <= width; x += lanePixels) {
        store(to, shuffle(load<Lane>(from), places) | set);
        from += fromBytes;
        to += toBytes;
    }
    return x;
}

#endif

/// The four samples of a pixel change places, and are multiplied or divided, as parts of a word, which the
/// compiler does for many pixels at a time.
template <PixelLayout layout, class Word, bool isIn, bool premultiplied>
void convertWords(const void* source, void* destination, std::ptrdiff_t width) {
    constexpr Order order = orderOf(layout);
    constexpr int bits = 2 * sizeof(Word);
    constexpr Word mask = (Word{1} << bits) - 1;
    constexpr Word opaque = order.hasAlpha ? 0 : mask;
    constexpr int alphaAt = isIn ? order.alpha : 3;
    const auto* from = static_cast<const std::uint8_t*>(source);
    auto* to = static_cast<std::uint8_t*>(destination);
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        Word pixel;
        std::memcpy(&pixel, from + x * std::ptrdiff_t{sizeof pixel}, sizeof pixel);
        const Word alpha = pixel >> (bits * alphaAt) & mask;
        const auto part = [pixel, alpha](int at, int wanted, Word orWith) {
            Word sample = pixel >> (bits * at) & mask;
            if (premultiplied && at != alphaAt)
                sample = isIn ? divided(sample, alpha) : multiplied(sample, alpha);
            return (sample | orWith) << (bits * wanted);
        };
        pixel = isIn ? part(order.blue, 0, 0) | part(order.green, 1, 0) | part(order.red, 2, 0) |
                           part(order.alpha, 3, opaque)
                     : part(0, order.blue, 0) | part(1, order.green, 0) | part(2, order.red, 0) |
                           part(3, order.alpha, opaque);
        std::memcpy(to + x * std::ptrdiff_t{sizeof pixel}, &pixel, sizeof pixel);
    }
}

void greyToWords(const void* source, void* bgra, std::ptrdiff_t width) {
    const auto* from = static_cast<const std::uint8_t*>(source);
    auto* to = static_cast<std::uint8_t*>(bgra);
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        const std::uint32_t pixel = from[x] * 0x010101U | 0xFF000000U;
        std::memcpy(to + 4 * x, &pixel, 4);
    }
}

void wordsToGrey(const void* bgra, void* destination, std::ptrdiff_t width) {
    const auto* from = static_cast<const std::uint8_t*>(bgra);
    auto* to = static_cast<std::uint8_t*>(destination);
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        std::uint32_t pixel;
        std::memcpy(&pixel, from + 4 * x, 4);
        to[x] = static_cast<std::uint8_t>(luma(pixel & 0xFF, pixel >> 8 & 0xFF, pixel >> 16 & 0xFF));
    }
}

template <class Sample>
struct Pixel {
    Sample blue, green, red, alpha;
};

template <PixelLayout layout, class Sample, bool premultiplied>
void convertIn(const void* source, void* bgra, std::ptrdiff_t width) {
    constexpr Order order = orderOf(layout);
    constexpr int samples = samplesOf(layout);
    const auto* from = static_cast<const std::uint8_t*>(source);
    auto* to = static_cast<std::uint8_t*>(bgra);
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        Sample given[samples];
        std::memcpy(given, from + x * std::ptrdiff_t{sizeof given}, sizeof given);
        Pixel<Sample> pixel{given[order.blue], given[order.green], given[order.red], full<Sample>};
        if constexpr (order.hasAlpha) pixel.alpha = given[order.alpha];
        if constexpr (premultiplied) {
            pixel.blue = divided(pixel.blue, pixel.alpha);
            pixel.green = divided(pixel.green, pixel.alpha);
            pixel.red = divided(pixel.red, pixel.alpha);
        }
        std::memcpy(to + x * std::ptrdiff_t{sizeof pixel}, &pixel, sizeof pixel);
    }
}

template <PixelLayout layout, class Sample, bool premultiplied>
void convertOut(const void* bgra, void* destination, std::ptrdiff_t width) {
    constexpr Order order = orderOf(layout);
    constexpr int samples = samplesOf(layout);
    const auto* from = static_cast<const std::uint8_t*>(bgra);
    auto* to = static_cast<std::uint8_t*>(destination);
    for (std::ptrdiff_t x = 0; x < width; ++x) {
        Pixel<Sample> pixel;
        std::memcpy(&pixel, from + x * std::ptrdiff_t{sizeof pixel}, sizeof pixel);
        Sample made[samples];
        if constexpr (premultiplied) {
            pixel.blue = multiplied(pixel.blue, pixel.alpha);
            pixel.green = multiplied(pixel.green, pixel.alpha);
            pixel.red = multiplied(pixel.red, pixel.alpha);
        }
        if constexpr (layout == PixelLayout::Grey) {
            if constexpr (std::is_floating_point_v<Sample>) {
                made[0] = luma(pixel.blue, pixel.green, pixel.red);
            } else {
                made[0] = static_cast<Sample>(luma(std::uint32_t{pixel.blue}, pixel.green, pixel.red));
            }
        } else {
            made[order.blue] = pixel.blue;
            made[order.green] = pixel.green;
            made[order.red] = pixel.red;
            if constexpr (samples == 4) made[order.alpha] = order.hasAlpha ? pixel.alpha : full<Sample>;
        }
        std::memcpy(to + x * std::ptrdiff_t{sizeof made}, made, sizeof made);
    }
}

template <PixelLayout layout, class Sample, bool isIn>
void convert(bool premultiplied, const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t width) {
    constexpr bool hasAlpha = orderOf(layout).hasAlpha;
#if defined(VIREO_SIMD_SHUFFLE)
    if constexpr (sizeof(Sample) <= 2 && layout != PixelLayout::Grey) {
        if (!premultiplied || !hasAlpha) {
            constexpr std::ptrdiff_t layoutBytes = samplesOf(layout) * std::ptrdiff_t{sizeof(Sample)};
            constexpr std::ptrdiff_t bgraBytes = 4 * sizeof(Sample);
            const std::ptrdiff_t moved = shuffleSamples<layout, Sample, isIn>(from, to, width);
            from += moved * (isIn ? layoutBytes : bgraBytes);
            to += moved * (isIn ? bgraBytes : layoutBytes);
            width -= moved;
        }
    }
#endif
    if constexpr (sizeof(Sample) <= 2 && samplesOf(layout) == 4) {
        using Word = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;
        premultiplied&& hasAlpha ? convertWords<layout, Word, isIn, true>(from, to, width)
                                 : convertWords<layout, Word, isIn, false>(from, to, width);
    } else if constexpr (sizeof(Sample) == 1 && layout == PixelLayout::Grey) {
        isIn ? greyToWords(from, to, width) : wordsToGrey(from, to, width);
    } else if constexpr (isIn) {
        premultiplied&& hasAlpha ? convertIn<layout, Sample, hasAlpha>(from, to, width)
                                 : convertIn<layout, Sample, false>(from, to, width);
    } else {
        premultiplied&& hasAlpha ? convertOut<layout, Sample, hasAlpha>(from, to, width)
                                 : convertOut<layout, Sample, false>(from, to, width);
    }
}

template <class Sample, bool isIn>
void convert(const PixelFormat& format, const void* source, void* destination, std::ptrdiff_t width) {
    const bool premultiplied = format.premultiplied;
    const auto* from = static_cast<const std::uint8_t*>(source);
    auto* to = static_cast<std::uint8_t*>(destination);
    switch (format.layout) {
        using enum PixelLayout;
        case Bgra: return convert<Bgra, Sample, isIn>(premultiplied, from, to, width);
        case Rgba: return convert<Rgba, Sample, isIn>(premultiplied, from, to, width);
        case Argb: return convert<Argb, Sample, isIn>(premultiplied, from, to, width);
        case Abgr: return convert<Abgr, Sample, isIn>(premultiplied, from, to, width);
        case Bgrx: return convert<Bgrx, Sample, isIn>(premultiplied, from, to, width);
        case Rgbx: return convert<Rgbx, Sample, isIn>(premultiplied, from, to, width);
        case Xrgb: return convert<Xrgb, Sample, isIn>(premultiplied, from, to, width);
        case Xbgr: return convert<Xbgr, Sample, isIn>(premultiplied, from, to, width);
        case Bgr: return convert<Bgr, Sample, isIn>(premultiplied, from, to, width);
        case Rgb: return convert<Rgb, Sample, isIn>(premultiplied, from, to, width);
        case Grey: return convert<Grey, Sample, isIn>(premultiplied, from, to, width);
    }
}

template <bool isIn>
void convert(const PixelFormat& format, const void* from, void* to, std::ptrdiff_t width);

/// Many pixels at a time can only be converted to another place.
template <bool isIn>
void convertInPlace(const PixelFormat& format, void* row, std::ptrdiff_t width) {
    constexpr std::ptrdiff_t blockPixels = 256;
    const std::ptrdiff_t pixelBytes = bytesOf(format.layout, format.depth);
    std::uint8_t aside[16 * blockPixels];
    auto* pixels = static_cast<std::uint8_t*>(row);
    for (std::ptrdiff_t x = 0; x < width; x += blockPixels) {
        const std::ptrdiff_t count = std::min(blockPixels, width - x);
        std::memcpy(aside, pixels + x * pixelBytes, static_cast<std::size_t>(count * pixelBytes));
        convert<isIn>(format, aside, pixels + x * pixelBytes, count);
    }
}

template <bool isIn>
void convert(const PixelFormat& format, const void* from, void* to, std::ptrdiff_t width) {
    if (width <= 0) return;  // such rows may be null
    if (format.layout == PixelLayout::Bgra && !format.premultiplied) {
        const auto bytes = static_cast<std::size_t>(width * bytesOf(format.layout, format.depth));
        std::memmove(to, from, bytes);
        return;
    }
    if (from == to) return convertInPlace<isIn>(format, to, width);
    switch (format.depth) {
        case SampleDepth::Eight: return convert<std::uint8_t, isIn>(format, from, to, width);
        case SampleDepth::Sixteen: return convert<std::uint16_t, isIn>(format, from, to, width);
        case SampleDepth::Float: return convert<float, isIn>(format, from, to, width);
    }
}

}  // namespace

extern const PixelLayoutKernels pixelLayoutKernels;
const PixelLayoutKernels pixelLayoutKernels{convert<true>, convert<false>};

}  // namespace vireo::VIREO_KERNEL_NAMESPACE
