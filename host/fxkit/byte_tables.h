// SPDX-License-Identifier: MIT
// Bytes of 4-byte pixels through a table of 256 for each of the first three. Only for kernel files.
#ifndef VIREO_HOST_FXKIT_BYTE_TABLES_H
#define VIREO_HOST_FXKIT_BYTE_TABLES_H

#include <cstdint>
#include <cstring>

#if defined(__AVX2__)
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

#elif defined(__AVX2__)

/// Sixteen registers hold a table, each the bytes of one upper half of the value. The lower half looks a byte
/// up in each, and the bits of the upper half choose between them.
class ByteTables {
public:
    explicit ByteTables(const std::uint8_t* const tables[3]) {
        for (int i = 0; i < 3; ++i) {
            for (int part = 0; part < 16; ++part) {
                const __m128i bytes =
                    _mm_loadu_si128(reinterpret_cast<const __m128i*>(tables[i] + 16 * part));
                parts_[i][part] = _mm256_broadcastsi128_si256(bytes);
            }
        }
    }

    void row(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width) const {
        std::int64_t x = 0;
        for (; x + blockPixels <= width; x += blockPixels) block(source + 4 * x, destination + 4 * x);
        if (x == width) return;
        const auto rest = static_cast<std::size_t>(4 * (width - x));
        std::uint8_t pixels[4 * blockPixels] = {};
        std::memcpy(pixels, source + 4 * x, rest);
        block(pixels, pixels);
        std::memcpy(destination + 4 * x, pixels, rest);
    }

private:
    static constexpr std::int64_t blockPixels = 32;

    struct Four {
        __m256i v[4];
    };

    /// The rows of a square of four by four 32-bit values in each half of the registers become its columns.
    static Four transposed(const Four& rows) {
        const __m256i low01 = _mm256_unpacklo_epi32(rows.v[0], rows.v[1]);
        const __m256i high01 = _mm256_unpackhi_epi32(rows.v[0], rows.v[1]);
        const __m256i low23 = _mm256_unpacklo_epi32(rows.v[2], rows.v[3]);
        const __m256i high23 = _mm256_unpackhi_epi32(rows.v[2], rows.v[3]);
        return {{_mm256_unpacklo_epi64(low01, low23), _mm256_unpackhi_epi64(low01, low23),
                 _mm256_unpacklo_epi64(high01, high23), _mm256_unpackhi_epi64(high01, high23)}};
    }

    /// The same of the bytes of four pixels: from pixels to channels, and back.
    static __m256i regrouped(__m256i pixels) {
        return _mm256_shuffle_epi8(pixels, _mm256_broadcastsi128_si256(_mm_setr_epi8(
                                               0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15)));
    }

    void block(const std::uint8_t* source, std::uint8_t* destination) const {
        Four pixels;
        for (int i = 0; i < 4; ++i) {
            pixels.v[i] = regrouped(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(source + 32 * i)));
        }
        Four channels = transposed(pixels);
        const __m256i lowerHalf = _mm256_set1_epi8(0x0F);
        for (int i = 0; i < 3; ++i) {
            channels.v[i] = found<4>(parts_[i], channels.v[i], _mm256_and_si256(channels.v[i], lowerHalf));
        }
        pixels = transposed(channels);
        for (int i = 0; i < 4; ++i) {
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(destination + 32 * i), regrouped(pixels.v[i]));
        }
    }

    /// Among 2^bits registers; bit 3 + bits of the values chooses the half.
    template <int bits>
    static __m256i found(const __m256i* parts, __m256i values, __m256i lowerHalves) {
        if constexpr (bits == 0) {
            return _mm256_shuffle_epi8(*parts, lowerHalves);
        } else {
            return _mm256_blendv_epi8(found<bits - 1>(parts, values, lowerHalves),
                                      found<bits - 1>(parts + (1 << (bits - 1)), values, lowerHalves),
                                      _mm256_slli_epi16(values, 4 - bits));
        }
    }

    __m256i parts_[3][16];
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
