// SPDX-License-Identifier: MIT
#include "engine/pixels/pixel_layout_kernels.h"

#include "simd/bytes.h"

#include <algorithm>
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

/// A colour above alpha counts as alpha: the quotient would be limited.
std::uint16_t divided(std::uint16_t color, std::uint16_t alpha) {
    const std::uint32_t dividend = std::uint32_t{std::min(color, alpha)} * 65535 + alpha / 2U;
    return static_cast<std::uint16_t>(dividend / std::max<std::uint32_t>(alpha, 1));
}

float divided(float color, float alpha) { return alpha > 0 ? color / alpha : 0; }

/// Bytes, in wider lanes, of which floats are divided many at a time. Both numbers fit exactly, and a
/// quotient below a whole number is further from it than it is rounded.
std::uint32_t dividedByte(std::uint32_t color, std::uint32_t alpha) {
    const std::uint32_t dividend = std::min(color, alpha) * 255 + alpha / 2;
    const auto divisor = static_cast<std::int32_t>(std::max(alpha, 1U));
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(
        static_cast<float>(static_cast<std::int32_t>(dividend)) / static_cast<float>(divisor)));
}

/// Divisions by 65535 and 255, rounded down, are sums and shifts.
std::uint16_t multiplied(std::uint16_t color, std::uint16_t alpha) {
    const std::uint32_t product = std::uint32_t{color} * alpha + 32767;
    return static_cast<std::uint16_t>((product + 1 + (product >> 16)) >> 16);
}

float multiplied(float color, float alpha) { return color * alpha; }

std::uint32_t multipliedByte(std::uint32_t color, std::uint32_t alpha) {
    const std::uint32_t product = color * alpha + 127;
    return (product + 1 + (product >> 8)) >> 8;
}

#if defined(__AVX2__)

/// Which byte of a pixel comes to a place; 0x80 for none.
template <PixelLayout layout, bool isIn>
constexpr std::uint32_t shuffleOfPixel() {
    constexpr Order order = orderOf(layout);
    constexpr int places[] = {order.blue, order.green, order.red, order.alpha};
    std::uint32_t shuffle = 0;
    for (int i = 0; i < 4; ++i) {
        const int from = isIn ? places[i] : i, to = isIn ? i : places[i];
        const bool isNone = i == 3 && !order.hasAlpha;
        shuffle |= static_cast<std::uint32_t>(isNone ? 0x80 : from) << (8 * to);
    }
    return shuffle;
}

/// Moves the bytes of as many pixels as fill registers and returns their number.
template <PixelLayout layout, bool isIn>
std::ptrdiff_t shuffleBytes(const std::uint8_t* from, std::uint8_t* to, std::ptrdiff_t width) {
    constexpr Order order = orderOf(layout);
    constexpr std::uint32_t full = order.hasAlpha ? 0 : 0xFFU << (8 * (isIn ? 3 : order.alpha));
    // Wider registers and more of them at a time move memory no faster.
    constexpr int pixels = 8;
    using Lanes = Vector<std::uint32_t, 4 * pixels>;
    using LaneBytes = Vector<std::uint8_t, 4 * pixels>;
    constexpr Lanes places{0, 0x04040404, 0x08080808, 0x0C0C0C0C, 0, 0x04040404, 0x08080808, 0x0C0C0C0C};
    const auto indices = (LaneBytes)(places + shuffleOfPixel<layout, isIn>());
    std::ptrdiff_t x = 0;
    for (; x + pixels <= width; x += pixels) {
        const auto moved = (Lanes)shuffle(load<LaneBytes>(from + 4 * x), indices);
        store(to + 4 * x, moved | full);
    }
    return x;
}

#endif

/// Four bytes change places, and are multiplied or divided, as parts of a word, which the compiler does for
/// many pixels at a time.
template <PixelLayout layout, bool isIn, bool premultiplied>
void convertWords(const void* source, void* destination, std::ptrdiff_t width) {
    constexpr Order order = orderOf(layout);
    constexpr std::uint32_t opaque = order.hasAlpha ? 0 : 0xFF;
    const auto* from = static_cast<const std::uint8_t*>(source);
    auto* to = static_cast<std::uint8_t*>(destination);
    std::ptrdiff_t begin = 0;
#if defined(__AVX2__)
    if constexpr (!premultiplied) begin = shuffleBytes<layout, isIn>(from, to, width);
#endif
    for (std::ptrdiff_t x = begin; x < width; ++x) {
        std::uint32_t pixel;
        std::memcpy(&pixel, from + 4 * x, 4);
        const std::uint32_t alpha = pixel >> (8 * (isIn ? order.alpha : 3)) & 0xFF;
        const auto part = [pixel, alpha](int at, int wanted, std::uint32_t orWith) {
            std::uint32_t sample = pixel >> (8 * at) & 0xFF;
            if (premultiplied && at != (isIn ? order.alpha : 3)) {
                sample = isIn ? dividedByte(sample, alpha) : multipliedByte(sample, alpha);
            }
            return (sample | orWith) << (8 * wanted);
        };
        pixel = isIn ? part(order.blue, 0, 0) | part(order.green, 1, 0) | part(order.red, 2, 0) |
                           part(order.alpha, 3, opaque)
                     : part(0, order.blue, 0) | part(1, order.green, 0) | part(2, order.red, 0) |
                           part(3, order.alpha, opaque);
        std::memcpy(to + 4 * x, &pixel, 4);
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
void convert(bool premultiplied, const void* from, void* to, std::ptrdiff_t width) {
    constexpr bool hasAlpha = orderOf(layout).hasAlpha;
    if constexpr (sizeof(Sample) == 1 && samplesOf(layout) == 4) {
        premultiplied&& hasAlpha ? convertWords<layout, isIn, true>(from, to, width)
                                 : convertWords<layout, isIn, false>(from, to, width);
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
void convert(const PixelFormat& format, const void* from, void* to, std::ptrdiff_t width) {
    const bool premultiplied = format.premultiplied;
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
