// SPDX-License-Identifier: MIT
#include "framework/row_copy_kernels.h"

#include <cstring>
#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace VIREO_KERNEL_NAMESPACE {
namespace {

// Wider vectors than these were measured to be slower here.
#if defined(__AVX2__)
constexpr std::int64_t lineBytes = 32;
#else
constexpr std::int64_t lineBytes = 16;
#endif

typedef std::uint8_t Line __attribute__((vector_size(lineBytes)));

Line load(const std::uint8_t* address) {
    Line line;
    std::memcpy(&line, address, sizeof line);
    return line;
}

void store(std::uint8_t* address, Line line) { std::memcpy(address, &line, sizeof line); }

/// Past the caches; the address is aligned.
void stream(std::uint8_t* address, Line line) {
#if defined(__AVX2__)
    _mm256_stream_si256(reinterpret_cast<__m256i*>(address), (__m256i)line);
#elif defined(__SSE2__)
    _mm_stream_si128(reinterpret_cast<__m128i*>(address), (__m128i)line);
#else
    store(address, line);
#endif
}

/// Ends that are no whole aligned line are covered by lines that overlap the others.
template <auto write>
void copyLines(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    if (bytes < lineBytes) {
        std::memcpy(destination, source, static_cast<std::size_t>(bytes));
        return;
    }
    const Line first = load(source);
    const Line last = load(source + bytes - lineBytes);
    const auto misaligned =
        static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(destination) % lineBytes);
    for (std::int64_t i = lineBytes - misaligned; i + lineBytes <= bytes; i += lineBytes) {
        write(destination + i, load(source + i));
    }
    store(destination, first);
    store(destination + bytes - lineBytes, last);
}

void copy(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    copyLines<store>(source, destination, bytes);
}

void copyPastCaches(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    copyLines<stream>(source, destination, bytes);
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

}  // namespace

const RowCopyKernels rowCopyKernels{copy, copyPastCaches};

}  // namespace VIREO_KERNEL_NAMESPACE
