// SPDX-License-Identifier: MIT
#include "app/media/color_kernels.h"

#include <cstring>

namespace vireo::VIREO_KERNEL_NAMESPACE {
namespace {

template <class Sample>
void repeat(const Sample* half, Sample* full, std::int64_t width) {
    for (std::int64_t i = 0; i < width / 2; ++i) {
        full[2 * i] = half[i];
        full[2 * i + 1] = half[i];
    }
    if (width % 2 != 0) full[width - 1] = half[width / 2];
}

// The conversion to int keeps 32-bit lanes, which vectorise far better than one straight to bytes.
template <class Channel>
inline std::uint32_t whole(float value) {
    constexpr float highest = sizeof(Channel) == 1 ? 255.0F : 65535.0F;
    value = value < 0.0F ? 0.0F : value;
    value = value > highest ? highest : value;
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(value));
}

template <class Channel>
inline void store(Channel* pixel, std::uint32_t b, std::uint32_t g, std::uint32_t r, std::uint32_t a) {
    if constexpr (sizeof(Channel) == 1) {
        const std::uint32_t word = b | g << 8 | r << 16 | a << 24;
        std::memcpy(pixel, &word, 4);
    } else {
        const std::uint32_t words[] = {b | g << 16, r | a << 16};
        std::memcpy(pixel, words, 8);
    }
}

template <class Sample, class Channel, bool hasAlpha, class Rounding>
inline void unpackRow(const YuvRow<Sample>& row, Channel* bgra, std::int64_t width, const YuvToRgb& by,
                      Rounding rounding) {
    const Sample* const ys = row.y;
    const Sample* const us = row.u;
    const Sample* const vs = row.v;
    const Sample* const as = row.a;
    const YuvToRgb m = by;
    for (std::int64_t i = 0; i < width; ++i) {
        const float y = m.luma * static_cast<float>(ys[i]);
        const float u = static_cast<float>(us[i]);
        const float v = static_cast<float>(vs[i]);
        const float half = rounding(i);
        const std::uint32_t r = whole<Channel>(y + m.redV * v + m.red + half);
        const std::uint32_t g = whole<Channel>(y + m.greenU * u + m.greenV * v + m.green + half);
        const std::uint32_t b = whole<Channel>(y + m.blueU * u + m.blue + half);
        std::uint32_t a = sizeof(Channel) == 1 ? 255 : 65535;
        if constexpr (hasAlpha) a = whole<Channel>(m.alpha * static_cast<float>(as[i]) + half);
        store(bgra + 4 * i, b, g, r, a);
    }
}

template <class Sample, class Channel, class Rounding>
inline void unpack(const YuvRow<Sample>& row, Channel* bgra, std::int64_t width, const YuvToRgb& by,
                   Rounding rounding) {
    if (row.a == nullptr) {
        unpackRow<Sample, Channel, false>(row, bgra, width, by, rounding);
    } else {
        unpackRow<Sample, Channel, true>(row, bgra, width, by, rounding);
    }
}

void unpack8(const YuvRow<std::uint8_t>& row, std::uint8_t* bgra, std::int64_t width, const YuvToRgb& by) {
    unpack(row, bgra, width, by, [](std::int64_t) { return 0.5F; });
}

void unpack16(const YuvRow<std::uint16_t>& row, std::uint8_t* bgra, std::int64_t width, const YuvToRgb& by,
              const float* dither) {
    unpack(row, bgra, width, by, [dither](std::int64_t i) { return dither[i]; });
}

void unpackDeep(const YuvRow<std::uint16_t>& row, std::uint16_t* bgra, std::int64_t width,
                const YuvToRgb& by) {
    unpack(row, bgra, width, by, [](std::int64_t) { return 0.5F; });
}

struct Colour {
    float b, g, r;
};

template <class Channel>
inline Colour load(const Channel* pixel) {
    if constexpr (sizeof(Channel) == 1) {
        std::uint32_t word;
        std::memcpy(&word, pixel, 4);
        return {static_cast<float>(static_cast<std::int32_t>(word & 0xFF)),
                static_cast<float>(static_cast<std::int32_t>(word >> 8 & 0xFF)),
                static_cast<float>(static_cast<std::int32_t>(word >> 16 & 0xFF))};
    } else {
        return {static_cast<float>(pixel[0]), static_cast<float>(pixel[1]), static_cast<float>(pixel[2])};
    }
}

inline Colour operator+(const Colour& a, const Colour& b) { return {a.b + b.b, a.g + b.g, a.r + b.r}; }

inline Colour operator*(float factor, const Colour& a) { return {factor * a.b, factor * a.g, factor * a.r}; }

template <class Sample>
inline Sample limited(float value, float highest) {
    value = value < 0.0F ? 0.0F : value;
    value = value > highest ? highest : value;
    return static_cast<Sample>(static_cast<std::int32_t>(value));
}

template <class Channel, class Sample>
void luma(const Channel* bgra, Sample* ys, std::int64_t width, const RgbToYuv& by) {
    const RgbToYuv m = by;
    for (std::int64_t i = 0; i < width; ++i) {
        const Colour c = load(bgra + 4 * i);
        ys[i] = limited<Sample>(m.lumaR * c.r + m.lumaG * c.g + m.lumaB * c.b + m.luma, m.highest);
    }
}

template <class Channel, class Sample>
void alpha(const Channel* bgra, Sample* as, std::int64_t width, const RgbToYuv& by) {
    const RgbToYuv m = by;
    for (std::int64_t i = 0; i < width; ++i)
        as[i] = limited<Sample>(m.alpha * static_cast<float>(bgra[4 * i + 3]) + 0.5F, m.highest);
}

template <class Sample>
inline void storeChroma(const Colour& c, Sample* u, Sample* v, const RgbToYuv& m) {
    *u = limited<Sample>(m.uR * c.r + m.uG * c.g + m.uB * c.b + m.u, m.highest);
    *v = limited<Sample>(m.vR * c.r + m.vG * c.g + m.vB * c.b + m.v, m.highest);
}

template <class Channel, class Sample>
void chroma(const Channel* above, const Channel* below, Sample* us, Sample* vs, std::int64_t width,
            const RgbToYuv& by) {
    const RgbToYuv m = by;
    for (std::int64_t i = 0; i < width; ++i)
        storeChroma(0.5F * (load(above + 4 * i) + load(below + 4 * i)), us + i, vs + i, m);
}

template <class Channel, class Sample>
void halfChroma(const Channel* above, const Channel* below, Sample* us, Sample* vs, std::int64_t width,
                const RgbToYuv& by) {
    const RgbToYuv m = by;
    for (std::int64_t i = 0; i < width / 2; ++i) {
        const Colour sum =
            load(above + 8 * i) + load(above + 8 * i + 4) + (load(below + 8 * i) + load(below + 8 * i + 4));
        storeChroma(0.25F * sum, us + i, vs + i, m);
    }
    if (width % 2 != 0) {
        const std::int64_t i = width / 2;
        storeChroma(0.5F * (load(above + 8 * i) + load(below + 8 * i)), us + i, vs + i, m);
    }
}

template <class Channel, class Sample>
constexpr PackKernels<Channel, Sample> packKernels{luma<Channel, Sample>, alpha<Channel, Sample>,
                                                   chroma<Channel, Sample>, halfChroma<Channel, Sample>};

}  // namespace

const ColorKernels colorKernels{
    repeat<std::uint8_t>,
    repeat<std::uint16_t>,
    unpack8,
    unpack16,
    unpackDeep,
    packKernels<std::uint8_t, std::uint8_t>,
    packKernels<std::uint8_t, std::uint16_t>,
    packKernels<std::uint16_t, std::uint8_t>,
    packKernels<std::uint16_t, std::uint16_t>,
};

}  // namespace vireo::VIREO_KERNEL_NAMESPACE
