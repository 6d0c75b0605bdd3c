// SPDX-License-Identifier: MIT
#include "framework/row_copy_kernels.h"

#include "simd/vectors.h"

#include <cstring>

namespace VIREO_KERNEL_NAMESPACE {
namespace {

#if defined(__SSE2__)

using namespace simd;

// Wider lines than these were measured to be slower.
constexpr std::int64_t lineBytes = vectorBytes < 32 ? vectorBytes : 32;
using Line = Vector<std::uint8_t, lineBytes>;

/// Writes whole aligned lines; the ends that are none are covered by lines that overlap them.
template <bool pastCaches>
void copyLines(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    if (bytes < lineBytes) {
        std::memmove(destination, source, static_cast<std::size_t>(bytes));
        return;
    }
    const auto first = load<Line>(source);
    const auto last = load<Line>(source + bytes - lineBytes);
    const auto misaligned =
        static_cast<std::int64_t>(reinterpret_cast<std::uintptr_t>(destination) % lineBytes);
    std::int64_t i = lineBytes - misaligned;
    for (; i + cacheLineBytes <= bytes; i += cacheLineBytes) {
        prefetchAhead<cacheLineBytes>(source + i);
        if constexpr (!pastCaches) prefetchAhead<cacheLineBytes>(destination + i);
        for (std::int64_t at = i; at < i + cacheLineBytes; at += lineBytes) {
            storeOrStream<pastCaches>(destination + at, load<Line>(source + at));
        }
    }
    for (; i + lineBytes <= bytes; i += lineBytes) {
        storeOrStream<pastCaches>(destination + i, load<Line>(source + i));
    }
    store(destination, first);
    store(destination + bytes - lineBytes, last);
}

#endif

#if defined(__AVX2__)

constexpr auto copy = copyLines<false>;

#else

void copy(const std::uint8_t* source, std::uint8_t* destination, std::int64_t bytes) {
    std::memmove(destination, source, static_cast<std::size_t>(bytes));
}

#endif

#if defined(__SSE2__)
constexpr auto copyPastCaches = copyLines<true>;
#else
constexpr auto copyPastCaches = copy;
#endif

}  // namespace

const RowCopyKernels rowCopyKernels{copy, copyPastCaches};

}  // namespace VIREO_KERNEL_NAMESPACE
