// SPDX-License-Identifier: MIT
#include "framework/row_copy_kernels.h"

#include <cstring>
#if defined(__AVX2__)
#include <immintrin.h>
#endif

namespace VIREO_KERNEL_NAMESPACE {
namespace {

#if defined(__AVX2__)

// Wider lines than these were measured to be slower.
constexpr std::int64_t lineBytes = 32;

__m256i load(const std::uint8_t* address) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(address));
}

void storeAnywhere(std::uint8_t* address, __m256i line) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(address), line);
}

void storeAligned(std::uint8_t* address, __m256i line) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(address), line);
}

void stream(std::uint8_t* address, __m256i line) {
    _mm256_stream_si256(reinterpret_cast<__m256i*>(address), line);
}

/// Writes whole aligned lines; the ends that are none are covered by lines that overlap them.
template <auto write>
void copyLines(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    if (bytes < lineBytes) {
        std::memmove(destination, source, static_cast<std::size_t>(bytes));
        return;
    }
    const __m256i first = load(source);
    const __m256i last = load(source + bytes - lineBytes);
    const auto misaligned =
        static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(destination) % lineBytes);
    for (std::int64_t i = lineBytes - misaligned; i + lineBytes <= bytes; i += lineBytes) {
        write(destination + i, load(source + i));
    }
    storeAnywhere(destination, first);
    storeAnywhere(destination + bytes - lineBytes, last);
}

void copy(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    copyLines<storeAligned>(source, destination, bytes);
}

void copyPastCaches(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    copyLines<stream>(source, destination, bytes);
    _mm_sfence();
}

#else

void copy(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    std::memmove(destination, source, static_cast<std::size_t>(bytes));
}

void copyPastCaches(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    copy(source, destination, bytes);
}

#endif

}  // namespace

const RowCopyKernels rowCopyKernels{copy, copyPastCaches};

}  // namespace VIREO_KERNEL_NAMESPACE
