// SPDX-License-Identifier: MIT
// Bytes of 4-byte pixels through a table of 256 for each of the first three. Only for kernel files.
#ifndef VIREO_HOST_FXKIT_BYTE_TABLES_H
#define VIREO_HOST_FXKIT_BYTE_TABLES_H

#include <cstdint>
#include <cstring>

#if defined(__AVX512VBMI__)
#include <immintrin.h>
#endif

namespace VIREO_KERNEL_NAMESPACE {
namespace {

#if defined(__AVX512VBMI__)

/// The tables lie in twelve registers. One instruction looks up the bytes of one table and one value of the
/// highest bit; it leaves the others as they are for the next.
class ByteTables {
public:
    explicit ByteTables(const std::uint8_t* const tables[3]) {
        for (int i = 0; i < 3; ++i) {
            for (int quarter = 0; quarter < 4; ++quarter) {
                quarters_[i][quarter] = _mm512_loadu_si512(tables[i] + 64 * quarter);
            }
        }
    }

    void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) const {
        std::int64_t x = 0;
        for (; x + 16 <= width; x += 16) {
            _mm512_storeu_si512(destination + 4 * x, mapped(_mm512_loadu_si512(source + 4 * x)));
        }
        const auto rest = static_cast<__mmask16>((1U << (width - x)) - 1);
        _mm512_mask_storeu_epi32(destination + 4 * x, rest,
                                 mapped(_mm512_maskz_loadu_epi32(rest, source + 4 * x)));
    }

private:
    __m512i mapped(__m512i pixels) const {
        const __mmask64 high = _mm512_movepi8_mask(pixels);
        for (int i = 0; i < 3; ++i) {
            const __mmask64 channel = 0x1111111111111111ULL << i;
            pixels =
                _mm512_mask2_permutex2var_epi8(quarters_[i][0], pixels, channel & ~high, quarters_[i][1]);
            pixels = _mm512_mask2_permutex2var_epi8(quarters_[i][2], pixels, channel & high, quarters_[i][3]);
        }
        return pixels;
    }

    __m512i quarters_[3][4];
};

#else

/// The tables hold their bytes where a pixel has them, so that three look-ups are joined without shifts.
class ByteTables {
public:
    explicit ByteTables(const std::uint8_t* const tables[3]) {
        for (int i = 0; i < 3; ++i) {
            for (int value = 0; value < 256; ++value) {
                placed_[i][value] = std::uint32_t{tables[i][value]} << 8 * i;
            }
        }
    }

    void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) const {
        std::int64_t x = 0;
        for (; x + 2 <= width; x += 2) {
            std::uint64_t pair;
            std::memcpy(&pair, source + 4 * x, 8);
            const std::uint64_t result = mapped(static_cast<std::uint32_t>(pair)) |
                                         std::uint64_t{mapped(static_cast<std::uint32_t>(pair >> 32))} << 32;
            std::memcpy(destination + 4 * x, &result, 8);
        }
        if (x < width) {
            std::uint32_t pixel;
            std::memcpy(&pixel, source + 4 * x, 4);
            pixel = mapped(pixel);
            std::memcpy(destination + 4 * x, &pixel, 4);
        }
    }

private:
    std::uint32_t mapped(std::uint32_t pixel) const {
        return placed_[0][pixel & 0xFF] | placed_[1][pixel >> 8 & 0xFF] | placed_[2][pixel >> 16 & 0xFF] |
               (pixel & 0xFF000000);
    }

    std::uint32_t placed_[3][256];
};

#endif

}  // namespace
}  // namespace VIREO_KERNEL_NAMESPACE

#endif
