// SPDX-License-Identifier: MIT
// Bytes through tables of 256.
#ifndef VIREO_SIMD_LOOKUP_H
#define VIREO_SIMD_LOOKUP_H

#include "simd/bytes.h"
#include "simd/pixels.h"

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

#if defined(__aarch64__)

/// A table of 256 in sixteen registers.
class ByteTable {
public:
    explicit ByteTable(const std::uint8_t* table)
        : quarters_{vld1q_u8_x4(table), vld1q_u8_x4(table + 64), vld1q_u8_x4(table + 128),
                    vld1q_u8_x4(table + 192)} {}

    /// An index beyond a quarter leaves what is there.
    uint8x16_t operator[](uint8x16_t index) const {
        uint8x16_t found = vqtbl4q_u8(quarters_[0], index);
        for (int i = 1; i < 4; ++i) {
            index -= 64;
            found = vqtbx4q_u8(found, quarters_[i], index);
        }
        return found;
    }

private:
    uint8x16x4_t quarters_[4];
};

#endif

/// Each byte becomes its entry in a table. Where bytes can be permuted over 64 lanes the table stays in four
/// registers, several times as fast as a load for each byte.
inline void lookup(const std::uint8_t* table, std::uint8_t* bytes, std::int64_t count) {
    std::int64_t i = 0;
#if defined(__AVX512VBMI__)
    Bytes quarters[4];
    std::memcpy(quarters, table, sizeof quarters);
    for (; i + 64 <= count; i += 64) {
        const auto index = load<Bytes>(bytes + i);
        // A shuffle of two vectors takes its indices modulo 128.
        const auto shuffled = [&](const Bytes& first, const Bytes& second) {
            return (Bytes)_mm512_permutex2var_epi8((__m512i)first, (__m512i)index, (__m512i)second);
        };
        const Bytes low = shuffled(quarters[0], quarters[1]);
        const Bytes high = shuffled(quarters[2], quarters[3]);
        store(bytes + i, index < 128 ? low : high);
    }
#elif defined(__aarch64__)
    const ByteTable entries(table);
    for (; i + 16 <= count; i += 16) vst1q_u8(bytes + i, entries[vld1q_u8(bytes + i)]);
#endif
    for (; i < count; ++i) bytes[i] = table[bytes[i]];
}

#if defined(__AVX512VBMI__)

/// Rows of 4-byte pixels through a table for each of the first three bytes. The tables lie in twelve
/// registers. One instruction looks up the bytes of one table and one value of the highest bit; it leaves the
/// others as they are for the next.
class PixelTables {
public:
    explicit PixelTables(const std::uint8_t* const tables[3]) {
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

/// Rows of 4-byte pixels through a table for each of the first three bytes. Sixteen registers hold a table,
/// each the bytes of one upper half of the value. The lower half looks a byte up in each, and the bits of the
/// upper half choose between them.
class PixelTables {
public:
    explicit PixelTables(const std::uint8_t* const tables[3]) {
        for (int i = 0; i < 3; ++i) {
            for (int part = 0; part < 16; ++part) parts_[i][part] = loadTwice(tables[i] + 16 * part);
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

    /// From four pixels' bytes to their channels, and back.
    static Bytes regrouped(Bytes pixels) {
        static constexpr std::uint8_t places[] = {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15};
        return shuffle(pixels, loadTwice(places));
    }

    void block(const std::uint8_t* source, std::uint8_t* destination) const {
        Bytes squares[4];
        for (int i = 0; i < 4; ++i) squares[i] = regrouped(load<Bytes>(source + 32 * i));
        transposeSquares(squares);
        for (int i = 0; i < 3; ++i) squares[i] = found<4>(parts_[i], squares[i], squares[i] & 0x0F);
        transposeSquares(squares);
        for (int i = 0; i < 4; ++i) store(destination + 32 * i, regrouped(squares[i]));
    }

    /// Among 2^bits registers; bit 3 + bits of the values chooses the half.
    template <int bits>
    static Bytes found(const Bytes* parts, Bytes values, Bytes lowerHalves) {
        if constexpr (bits == 0) {
            return shuffle(*parts, lowerHalves);
        } else {
            return blend(found<bits - 1>(parts, values, lowerHalves),
                         found<bits - 1>(parts + (1 << (bits - 1)), values, lowerHalves),
                         (Bytes)((Words)values << (4 - bits)));
        }
    }

    Bytes parts_[3][16];
};

#elif defined(__aarch64__)

/// Rows of 4-byte pixels through a table for each of the first three bytes, one table in the registers at a
/// time.
class PixelTables {
public:
    explicit PixelTables(const std::uint8_t* const tables[3]) : tables_{tables[0], tables[1], tables[2]} {}

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
    static constexpr int parts = 3;
    static constexpr std::int64_t blockPixels = 16 * parts;

    void block(const std::uint8_t* source, std::uint8_t* destination) const {
        uint8x16x4_t channels[parts];
        for (int i = 0; i < parts; ++i) channels[i] = vld4q_u8(source + 64 * i);
        for (int c = 0; c < 3; ++c) {
            const ByteTable table(tables_[c]);
            for (uint8x16x4_t& part : channels) part.val[c] = table[part.val[c]];
        }
        for (int i = 0; i < parts; ++i) vst4q_u8(destination + 64 * i, channels[i]);
    }

    const std::uint8_t* tables_[3];
};

#else

/// Rows of 4-byte pixels through a table for each of the first three bytes. The tables hold their bytes where
/// a pixel has them, so that three look-ups are joined without shifts.
class PixelTables {
public:
    explicit PixelTables(const std::uint8_t* const tables[3]) {
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
            // Else compilers look several pairs up at once and join the entries in vectors.
            asm("" : "+r"(pair));
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

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
