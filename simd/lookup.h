// SPDX-License-Identifier: MIT
// Bytes through tables of 256.
#ifndef VIREO_SIMD_LOOKUP_H
#define VIREO_SIMD_LOOKUP_H

#include "simd/bytes.h"
#include "simd/pixels.h"

namespace simd {
inline namespace VIREO_KERNEL_NAMESPACE {

#if defined(__AVX512VBMI__)

/// A table of 256 in four registers.
class ByteTable {
public:
    explicit ByteTable(const std::uint8_t* table) { std::memcpy(quarters_, table, sizeof quarters_); }

    Bytes operator[](Bytes index) const {
        // A shuffle of two vectors takes its indices modulo 128.
        const auto shuffled = [&](const Bytes& first, const Bytes& second) {
            return (Bytes)_mm512_permutex2var_epi8((__m512i)first, (__m512i)index, (__m512i)second);
        };
        const Bytes low = shuffled(quarters_[0], quarters_[1]);
        const Bytes high = shuffled(quarters_[2], quarters_[3]);
        return index < 128 ? low : high;
    }

private:
    Bytes quarters_[4];
};

#elif defined(__AVX2__)

/// A table of 256 in sixteen registers, of which each but the first of a half holds what differs from the one
/// before. An index's lower seven bits are looked up in all while they go down by 16, as long as they are not
/// negative: the differences up to there make the entry.
class ByteTable {
public:
    explicit ByteTable(const std::uint8_t* table) {
        for (int i = 0; i < 2 * half; ++i) {
            parts_[i] = loadTwice(table + 16 * i);
            if (i % half != 0) parts_[i] ^= loadTwice(table + 16 * (i - 1));
        }
    }

    Bytes operator[](Bytes index) const {
        Bytes left = index & 0x7F;
        Bytes low = shuffle(parts_[0], left);
        Bytes high = shuffle(parts_[half], left);
        for (int i = 1; i < half; ++i) {
            left -= 16;
            low ^= shuffle(parts_[i], left);
            high ^= shuffle(parts_[half + i], left);
        }
        return blend(low, high, index);
    }

private:
    static constexpr int half = 8;

    Bytes parts_[2 * half];
};

#elif defined(__aarch64__)

/// A table of 256 in sixteen registers.
class ByteTable {
public:
    explicit ByteTable(const std::uint8_t* table)
        : quarters_{vld1q_u8_x4(table), vld1q_u8_x4(table + 64), vld1q_u8_x4(table + 128),
                    vld1q_u8_x4(table + 192)} {}

    /// An index beyond a quarter leaves what is there.
    Bytes operator[](Bytes index) const {
        auto left = (uint8x16_t)index;
        uint8x16_t found = vqtbl4q_u8(quarters_[0], left);
        for (int i = 1; i < 4; ++i) {
            left -= 64;
            found = vqtbx4q_u8(found, quarters_[i], left);
        }
        return (Bytes)found;
    }

private:
    uint8x16x4_t quarters_[4];
};

#else

/// Looks bytes up one by one.
class ByteTable {
public:
    explicit ByteTable(const std::uint8_t* table) : table_(table) {}

    std::uint8_t operator[](std::uint8_t index) const { return table_[index]; }

private:
    const std::uint8_t* table_;
};

#endif

/// Whether a table takes whole vectors, several times as fast as a load for each byte.
inline constexpr bool looksVectorsUp =
    std::is_invocable_v<decltype(&ByteTable::operator[]), ByteTable, Bytes>;

/// Each byte of some vectors becomes its entry in the table.
inline void lookUp(const ByteTable& table, std::uint8_t* bytes, std::int64_t count) {
    constexpr int step = looksVectorsUp ? vectorBytes : 1;
    using Step = std::conditional_t<looksVectorsUp, Bytes, std::uint8_t>;
    for (std::int64_t i = 0; i < count; i += step) store(bytes + i, table[load<Step>(bytes + i)]);
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

    void row(const PixelRow& row) const {
        mapPixels(row, [this](Pixels pixels) { return (Pixels)mapped((__m512i)pixels); });
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

#elif defined(__AVX2__) || defined(__aarch64__)

/// Rows of 4-byte pixels through a table for each of the first three bytes, one table at a time.
class PixelTables {
public:
    explicit PixelTables(const std::uint8_t* const tables[3])
        : tables_{ByteTable(tables[0]), ByteTable(tables[1]), ByteTable(tables[2])} {}

    void row(const PixelRow& row) const {
        mapBlocks<squares * vectorBytes>(
            row, [this](const std::uint8_t* source, std::uint8_t* destination, const auto& put) {
                Bytes channels[squares][4];
                for (int i = 0; i < squares; ++i) {
                    for (int j = 0; j < 4; ++j) {
                        channels[i][j] = regrouped(load<Bytes>(source + (4 * i + j) * vectorBytes));
                    }
                    transposeSquares(channels[i]);
                }
                for (int c = 0; c < 3; ++c) {
                    for (auto& square : channels) square[c] = tables_[c][square[c]];
                }
                for (int i = 0; i < squares; ++i) {
                    transposeSquares(channels[i]);
                    for (int j = 0; j < 4; ++j) {
                        put(destination + (4 * i + j) * vectorBytes, regrouped(channels[i][j]));
                    }
                }
            });
    }

private:
    /// So many times four vectors of pixels. More, and registers are missing beside a table's.
    static constexpr int squares = 32 / vectorBytes;

    /// From four pixels' bytes to their channels, and back.
    static Bytes regrouped(Bytes pixels) {
        return shuffle(pixels,
                       bytesByPlace([](int i) { return static_cast<std::uint8_t>(i % 4 * 4 + i % 16 / 4); }));
    }

    ByteTable tables_[3];
};

#else

/// Rows of 4-byte pixels through a table for each of the first three bytes. Two pixels are looked up at once:
/// the tables hold their bytes where the pair has them, so that six entries are joined without shifts.
class PixelTables {
public:
    explicit PixelTables(const std::uint8_t* const tables[3]) {
        for (int i = 0; i < 8; ++i) {
            if (i % 4 == 3) continue;
            for (int value = 0; value < 256; ++value) {
                placed_[i][value] = std::uint64_t{tables[i % 4][value]} << 8 * i;
            }
        }
    }

    void row(const PixelRow& row) const {
        mapBlocks<cacheLineBytes / 4>(
            row, [this](const std::uint8_t* source, std::uint8_t* destination, const auto& put) {
                const auto& placed = placed_;
                for (int at = 0; at < cacheLineBytes; at += 8) {
                    auto pair = load<std::uint64_t>(source + at);
                    // Else compilers look several pairs up at once and join the entries in vectors.
                    asm("" : "+r"(pair));
                    std::uint64_t result = pair & 0xFF000000FF000000;
                    for (int i = 0; i < 8; ++i) {
                        if (i % 4 != 3) result |= placed[i][pair >> 8 * i & 0xFF];
                    }
                    put(destination + at, result);
                }
            });
    }

private:
    std::uint64_t placed_[8][256];
};

#endif

}  // namespace VIREO_KERNEL_NAMESPACE
}  // namespace simd

#endif
