// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_PNG_CHUNKS_H
#define VIREO_APP_MEDIA_PNG_CHUNKS_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace vireo {

/// Takes those chunks out of a PNG picture, or a part of one, that a few bytes can make gigabytes of:
/// compressed text, which nobody reads here, and large colour profiles. Returns how many bytes are left.
std::size_t removeSwellingChunks(std::span<std::uint8_t> png);

}  // namespace vireo

#endif
