// SPDX-License-Identifier: MIT
#include "host/hosting/mix.h"

#include "host/pixkit/pixel_view.h"

#include <cstdint>
#include <type_traits>

namespace hosting {
namespace {

constexpr int channels = 4;
constexpr int alphaChannel = 3;

/// What the channels are computed in: 32 bits hold 255 · 255 · 100 doubled, 64 hold the same of 65535.
template <class Channel>
using Wide = std::conditional_t<std::is_floating_point_v<Channel>, double,
                                std::conditional_t<sizeof(Channel) == 1, std::uint32_t, std::uint64_t>>;

/// Rounds half up where the channel is a whole number.
template <class Channel>
Channel quotient(Wide<Channel> numerator, Wide<Channel> denominator) {
    if constexpr (std::is_floating_point_v<Channel>) {
        return static_cast<Channel>(numerator / denominator);
    } else {
        return static_cast<Channel>((2 * numerator + denominator) / (2 * denominator));
    }
}

template <class Channel>
void mixPixel(const Channel* source, Channel* result, Wide<Channel> percent) {
    using Number = Wide<Channel>;
    const Number rest = fullMix - percent;
    const Number sourceAlpha = source[alphaChannel], resultAlpha = result[alphaChannel];
    if (sourceAlpha == resultAlpha) {  // equal weights fall out
        for (int i = 0; i < alphaChannel; ++i) {
            result[i] = quotient<Channel>(source[i] * rest + result[i] * percent, fullMix);
        }
        return;
    }
    const Number sourceWeight = sourceAlpha * rest, resultWeight = resultAlpha * percent;
    for (int i = 0; i < alphaChannel; ++i) {
        result[i] = quotient<Channel>(source[i] * sourceWeight + result[i] * resultWeight,
                                      sourceWeight + resultWeight);
    }
    result[alphaChannel] = quotient<Channel>(sourceWeight + resultWeight, fullMix);
}

template <class Channel>
void mixRows(const PixKit::PixelView& source, const PixKit::PixelView& result, int percent) {
    for (std::int64_t y = result.rows.begin; y < result.rows.end; ++y) {
        const auto* from = reinterpret_cast<const Channel*>(source.at(source.columns.begin, y));
        auto* to = reinterpret_cast<Channel*>(result.at(result.columns.begin, y));
        for (std::int64_t x = 0; x < result.columns.size(); ++x, from += channels, to += channels) {
            mixPixel(from, to, static_cast<Wide<Channel>>(percent));
        }
    }
}

}  // namespace

void mixInto(const FrameBuffer& source, const FrameBuffer& result, int percent) {
    const PixKit::PixelView from = PixKit::viewOf(&source);
    const PixKit::PixelView to = PixKit::viewOf(&result);
    switch (to.pixelBytes / channels) {
        case 1: return mixRows<std::uint8_t>(from, to, percent);
        case 2: return mixRows<std::uint16_t>(from, to, percent);
        default: return mixRows<float>(from, to, percent);
    }
}

}  // namespace hosting
