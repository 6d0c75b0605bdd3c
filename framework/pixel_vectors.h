// SPDX-License-Identifier: MIT
// Vectors of pixels for kernel files, as wide as the instruction set that the file is compiled for.
#ifndef VIREO_FRAMEWORK_PIXEL_VECTORS_H
#define VIREO_FRAMEWORK_PIXEL_VECTORS_H

#include <cstdint>
#include <cstring>
#if defined(__SSE2__)
#include <immintrin.h>
#elif defined(__wasm_simd128__)
#include <wasm_simd128.h>
#endif

namespace VIREO_KERNEL_NAMESPACE {

#if defined(__AVX512BW__)
inline constexpr int vectorBytes = 64;
#elif defined(__AVX2__)
inline constexpr int vectorBytes = 32;
#else
inline constexpr int vectorBytes = 16;
#endif

// The same bits seen as bytes, as 16-bit words and as pixels; a cast changes the view.
typedef std::uint8_t ByteVector __attribute__((vector_size(vectorBytes)));
typedef std::uint16_t WordVector __attribute__((vector_size(vectorBytes)));
typedef std::uint32_t PixelVector __attribute__((vector_size(vectorBytes)));
typedef std::int32_t IntVector __attribute__((vector_size(vectorBytes)));

inline constexpr std::int64_t vectorPixels = vectorBytes / 4;

inline PixelVector loadPixels(const std::uint8_t* address) {
    PixelVector pixels;
    std::memcpy(&pixels, address, sizeof pixels);
    return pixels;
}

inline void storePixels(std::uint8_t* address, PixelVector pixels) {
    std::memcpy(address, &pixels, sizeof pixels);
}

/// Past the caches, to an address that is a multiple of vectorBytes.
inline void streamPixels(std::uint8_t* address, PixelVector pixels) {
#if defined(__AVX512BW__)
    _mm512_stream_si512(reinterpret_cast<__m512i*>(address), (__m512i)pixels);
#elif defined(__AVX2__)
    _mm256_stream_si256(reinterpret_cast<__m256i*>(address), (__m256i)pixels);
#elif defined(__SSE2__)
    _mm_stream_si128(reinterpret_cast<__m128i*>(address), (__m128i)pixels);
#else
    storePixels(address, pixels);
#endif
}

/// Other threads see no streamed pixel late that was written before this.
inline void finishStreaming() {
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

/// Means of bytes, halves rounded up.
inline ByteVector averageUp(ByteVector a, ByteVector b) {
#if defined(__AVX512BW__)
    return (ByteVector)_mm512_avg_epu8((__m512i)a, (__m512i)b);
#elif defined(__AVX2__)
    return (ByteVector)_mm256_avg_epu8((__m256i)a, (__m256i)b);
#elif defined(__SSE2__)
    return (ByteVector)_mm_avg_epu8((__m128i)a, (__m128i)b);
#else
    return (a | b) - ((a ^ b) >> 1);
#endif
}

/// The upper 16 bits of each product.
inline WordVector multiplyHigh(WordVector a, WordVector b) {
#if defined(__AVX512BW__)
    return (WordVector)_mm512_mulhi_epu16((__m512i)a, (__m512i)b);
#elif defined(__AVX2__)
    return (WordVector)_mm256_mulhi_epu16((__m256i)a, (__m256i)b);
#elif defined(__SSE2__)
    return (WordVector)_mm_mulhi_epu16((__m128i)a, (__m128i)b);
#else
    const PixelVector even = ((PixelVector)a & 0xFFFF) * ((PixelVector)b & 0xFFFF) >> 16;
    const PixelVector odd = ((PixelVector)a >> 16) * ((PixelVector)b >> 16) & 0xFFFF0000;
    return (WordVector)(even | odd);
#endif
}

/// Writes map(PixelVector) of `width` pixels. Source and destination are the same or apart.
template <class Map>
void mapPixels(const std::uint8_t* source, std::uint8_t* destination, std::int64_t width, Map&& map) {
    std::int64_t x = 0;
    for (; x + vectorPixels <= width; x += vectorPixels) {
        storePixels(destination + 4 * x, map(loadPixels(source + 4 * x)));
    }
    if (x == width) return;
    const auto rest = static_cast<std::size_t>(4 * (width - x));
    PixelVector pixels{};
    std::memcpy(&pixels, source + 4 * x, rest);
    pixels = map(pixels);
    std::memcpy(destination + 4 * x, &pixels, rest);
}

}  // namespace VIREO_KERNEL_NAMESPACE

#endif
