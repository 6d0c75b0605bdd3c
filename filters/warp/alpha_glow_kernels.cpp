// SPDX-License-Identifier: MIT
#include "filters/warp/alpha_glow_kernels.h"

#include "simd/ints.h"
#include "simd/pixels.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

using namespace simd;

constexpr std::int64_t wordPixels = 64;
static_assert(wordPixels % vectorPixels == 0);

std::uint32_t solidBits(Pixels pixels) { return movemask((Ints)(pixels >= 0xF8000000u)); }

void markSolid(const std::uint8_t* source, MarkWord* marks, std::int64_t width) {
    std::int64_t x = 0;
    for (; x + wordPixels <= width; x += wordPixels) {
        MarkWord word = 0;
        for (std::int64_t i = 0; i < wordPixels; i += vectorPixels) {
            word |= MarkWord{solidBits(load<Pixels>(source + 4 * (x + i)))} << i;
        }
        *marks++ = word;
    }
    if (x == width) return;
    *marks = 0;
    for (std::int64_t i = 0; x + i < width; ++i) {
        *marks |= MarkWord{source[4 * (x + i) + 3] >= 248} << i;
    }
}

void growRow(const MarkRows& rows, const MarkWord* glow, MarkWord* ring, std::size_t count) {
    const MarkWord* above = rows.above;
    const MarkWord* row = rows.row;
    const MarkWord* below = rows.below;
    for (std::size_t i = 1; i < count; ++i) {
        const MarkWord left = row[i] << 1 | row[i - 1] >> 63;
        const MarkWord right = row[i] >> 1 | row[i + 1] << 63;
        ring[i] = ringMarks(above[i], below[i], left, row[i], right, glow[i]);
    }
}

bool addMarks(const MarkWord* ring, MarkWord* solid, MarkWord* glow, std::size_t count) {
    MarkWord any = 0;
    for (std::size_t i = 0; i < count; ++i) {
        any |= ring[i];
        solid[i] |= ring[i];
        glow[i] |= ring[i];
    }
    return any != 0;
}

/// A ring's colour and opacity over a vector of pixels. Differences and products are taken in 16 bits: of
/// what lies beyond, no bit reaches the result's bytes.
class Blend {
public:
    Blend(std::uint32_t color, int opacity)
        : color_(broadcast<Pixels>(color & 0x00FFFFFF)),
          opacity_(broadcast<Ints>(opacity)),
          evenColor_((Words)(color_ & 0x00FF00FF)),
          oddColor_((Words)(color_ >> 8 & 0x00FF00FF)) {}

    Pixels operator()(Pixels pixels) const {
        const auto alpha = (Ints)(pixels >> 24);
        const Ints transparent = alpha == 0;
        const Ints factor = transparent ? opacity_ : (255 - alpha) * opacity_ >> 8;
        const Ints newAlpha = (transparent | (opacity_ > alpha)) ? opacity_ : alpha;

        const auto words = (Words)pixels;
        const auto factors = (Words)((Pixels)(factor & 0xFFFF) | (Pixels)factor << 16);
        const Words even = mixed(words & 0xFF, evenColor_, factors);
        const Words odd = mixed(words >> 8, oddColor_, factors);
        const auto mix = (Pixels)even | ((Pixels)odd << 8 & 0x0000FF00);
        return (factor == 255 ? color_ : mix) | (Pixels)newAlpha << 24;
    }

private:
    static Words mixed(Words from, Words to, Words factors) {
        return (from + ((to - from) * factors >> 8)) & 0xFF;
    }

    Pixels color_;
    Ints opacity_;
    Words evenColor_;
    Words oddColor_;
};

/// Writes map(Pixels) over the first vector of `width` pixels, or over all where they are fewer.
template <class Map>
void mapFirst(std::uint8_t* pixels, std::int64_t width, Map&& map) {
    if (width >= vectorPixels) return store(pixels, map(load<Pixels>(pixels)));
    const auto bytes = static_cast<std::size_t>(4 * width);
    Pixels few{};
    std::memcpy(&few, pixels, bytes);
    few = map(few);
    std::memcpy(pixels, &few, bytes);
}

void blendRow(const MarkWord* marks, std::uint8_t* pixels, std::int64_t width, std::uint32_t color,
              int opacity) {
    const Blend blend(color, opacity);
    constexpr MarkWord vectorBits = (MarkWord{1} << vectorPixels) - 1;
    for (std::int64_t begin = 0; begin < width; begin += wordPixels, ++marks) {
        // Marks are sparse: only vectors that hold one are touched.
        for (MarkWord left = *marks; left != 0;) {
            const std::int64_t first = __builtin_ctzll(left) / vectorPixels * vectorPixels;
            const auto marked = (Pixels)maskOf(static_cast<std::uint32_t>(left >> first & vectorBits));
            const std::int64_t x = begin + first;
            if (x >= width) return;
            mapFirst(pixels + 4 * x, width - x,
                     [&](Pixels old) { return (blend(old) & marked) | (old & ~marked); });
            left &= ~(vectorBits << first);
        }
    }
}

}  // namespace

const AlphaGlowKernels alphaGlowKernels{markSolid, growRow, addMarks, blendRow};

}  // namespace VIREO_KERNEL_NAMESPACE
