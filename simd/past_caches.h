// SPDX-License-Identifier: MIT
// Frames that are written past the caches, since nobody will find them there.
#ifndef VIREO_SIMD_PAST_CACHES_H
#define VIREO_SIMD_PAST_CACHES_H

#include <cstdint>

/// Frames from this size on are gone from the caches before anybody reads them.
inline constexpr std::int64_t largeFrameBytes = 16 << 20;

/// Whether a frame's result is written past the caches. Over its source it is not: that lies in them.
inline bool goesPastCaches(const std::uint8_t* source, const std::uint8_t* destination,
                           std::int64_t rowLength, std::int64_t rows) {
    return source != destination && rows > 0 && rowLength >= largeFrameBytes / rows;
}

/// Behind a frame that was: other threads see nothing of it late. It waits for the memory, and so does not
/// belong behind every row.
inline void fencePastCaches() {
#if defined(__SSE2__)
    __builtin_ia32_sfence();
#endif
}

#endif
